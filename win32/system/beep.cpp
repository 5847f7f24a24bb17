#include <fcntl.h>
#include <linux/input.h>
#include <linux/kd.h>
#include <sys/ioctl.h>
#include <sys/time.h>

#include <optional>

#include "win32/system/file_descriptor.h"
#include "winbase.h"

namespace tk::system {
namespace {

constexpr DWORD kLowestHertz = 37;
constexpr DWORD kHighestHertz = 32767;
constexpr unsigned long kTimerHertz = 1193180;  // the clock behind the console's tone, which takes a divisor

constexpr const char* kSpeakers[] = {"/dev/input/by-path/platform-pcspkr-event-spkr"};
constexpr const char* kConsoles[] = {"/dev/tty0", "/dev/console"};

constexpr int kOpenMode = O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

/// Sounds from construction to destruction where a speaker can be had.
class Tone {
public:
    explicit Tone(DWORD hertz) {
        for (const char* path : kSpeakers) {
            if (!device_ && Open(path, hertz, true)) return;
        }
        for (const char* path : kConsoles) {
            if (!device_ && Open(path, hertz, false)) return;
        }
    }
    Tone(const Tone&) = delete;
    Tone& operator=(const Tone&) = delete;
    ~Tone() {
        if (device_) Sound(0);
    }

private:
    bool Open(const char* path, DWORD hertz, bool isSpeaker) {
        device_ = FileDescriptor(open(path, kOpenMode));
        isSpeaker_ = isSpeaker;
        if (device_ && !Sound(hertz)) device_ = FileDescriptor();
        return static_cast<bool>(device_);
    }

    bool Sound(DWORD hertz) {
        if (!isSpeaker_) return ioctl(device_.Get(), KIOCSOUND, hertz != 0 ? kTimerHertz / hertz : 0) == 0;
        input_event event{};
        event.type = EV_SND;
        event.code = SND_TONE;
        event.value = static_cast<int>(hertz);
        return write(device_.Get(), &event, sizeof event) == static_cast<ssize_t>(sizeof event);
    }

    FileDescriptor device_;
    bool isSpeaker_ = false;
};

}  // namespace
}  // namespace tk::system

BOOL Beep(DWORD dwFreq, DWORD dwDuration) {
    using namespace tk::system;
    // A tone nobody can hear is a pause.
    std::optional<Tone> tone;
    if (dwFreq >= kLowestHertz && dwFreq <= kHighestHertz) tone.emplace(dwFreq);
    Sleep(dwDuration);
    return TRUE;
}
