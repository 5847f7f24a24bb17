#include "util/alarm.h"

#include <system_error>
#include <thread>

#include "tkkernel/util.h"

namespace tk::util {
namespace {

constexpr DWORD kAlarmHertz = 2300;
constexpr DWORD kAlarmMs = 50;
constexpr DWORD kPauseMs = 100;

constexpr DWORD kSweepFromHertz = 800;
constexpr DWORD kSweepStepHertz = 50;
constexpr DWORD kSweepToneMs = 10;

void PlaySweeps(int count) {
    for (; count > 0; --count) {
        for (DWORD hertz = kSweepFromHertz; hertz < kAlarmHertz; hertz += kSweepStepHertz)
            Beep(hertz, kSweepToneMs);
    }
}

}  // namespace

void SoundAlarm() {
    Beep(kAlarmHertz, kAlarmMs);
}

}  // namespace tk::util

int MsgBeep() {
    using namespace tk::util;
    SoundAlarm();
    Sleep(kPauseMs);
    SoundAlarm();
    Sleep(kPauseMs);
    SoundAlarm();
    return 1;
}

void OnWarningMessage(int nCount) {
    if (nCount < 1) return;
    try {
        std::thread(tk::util::PlaySweeps, nCount).detach();
    } catch (const std::system_error&) {
        // No thread to be had: an alarm that cannot sound is no failure of what it warns about.
    }
}
