// The tests of kernel objects, and the jobs of their child processes.
#include <signal.h>

#include <random>

#include "tests/win32/kernel/stepped_call.h"
#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

int Answer(ChildTalk& talk) {
    const Handle go = AutoEvent("Go");
    const Handle back = AutoEvent("Back");
    std::thread([&] {
        talk.Hear();
        _exit(0);
    }).detach();
    talk.Say("ready");
    while (WaitForSingleObject(go, INFINITE) == WAIT_OBJECT_0)
        SetEvent(back);
    return 1;
}

int SetWhenTold(ChildTalk& talk) {
    const Handle go = AutoEvent("Go");
    talk.Say("ready");
    while (talk.Hear() == "set")
        SetEvent(go);
    return 0;
}

int WaitTimer(ChildTalk& talk) {
    const Handle timer = OpenWaitableTimerA(TIMER_ALL_ACCESS, FALSE, "Evening");
    talk.Say("ready");
    return WaitForSingleObject(timer, 60000) == WAIT_OBJECT_0 ? 0 : 1;
}

/// Leaves everything open, whether it ends by itself or not.
int HoldAll(ChildTalk& talk) {
    if (CreateEventA(nullptr, FALSE, FALSE, "Held") == nullptr) return 1;
    if (WaitForSingleObject(CreateMutexA(nullptr, FALSE, "Held.Mutex"), 60000) == WAIT_FAILED) return 2;
    if (CreateWaitableTimerA(nullptr, FALSE, "Held.Timer") == nullptr) return 3;
    if (CreateEventA(nullptr, FALSE, FALSE, nullptr) == nullptr) return 4;
    talk.Say("ready");
    talk.Hear();
    return 0;
}

int WaitGo(ChildTalk& talk) {
    const Handle go = AutoEvent("Go");
    talk.Say("ready");
    return WaitForSingleObject(go, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
}

int WaitPlaces(ChildTalk& talk) {
    const Handle places = CreateSemaphoreA(nullptr, 0, 100, "Places");
    talk.Say("ready");
    return WaitForSingleObject(places, INFINITE) == WAIT_OBJECT_0 ? 0 : 1;
}

int TakePlaces(ChildTalk& talk) {
    const Handle places = CreateSemaphoreA(nullptr, 0, 1000, "Places");
    talk.Say("ready");
    while (WaitForSingleObject(places, INFINITE) == WAIT_OBJECT_0)
        talk.Say("took");
    return 1;
}

/// Ends, or stops, while it makes room for more objects.
int FillUp(int signal) {
    TheFaults().fullAfter = 1;
    TheFaults().signalWhenFull = signal;
    std::vector<Handle> handles;
    for (int i = 0; i < 1000; ++i)
        handles.push_back(AutoEvent(("Die." + std::to_string(i)).c_str()));
    return 1;
}
int DieMaking(ChildTalk&) {
    return FillUp(SIGKILL);
}
int StopMaking(ChildTalk&) {
    return FillUp(SIGSTOP);
}

int DieFirst(ChildTalk&) {
    TheFaults().fullAfter = 0;
    TheFaults().signalWhenFull = SIGKILL;
    const Handle event = AutoEvent("First");
    return 1;
}

/// Everything that named objects do, on several threads, until it is killed.
int Chaos(ChildTalk& talk) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([i] {
            std::minstd_rand random(static_cast<unsigned>(getpid() * 2 + i));
            for (;;) {
                const std::string name = "Chaos." + std::to_string(random() % 3);
                const Handle event = AutoEvent(name.c_str());
                const Handle mutex = CreateMutexA(nullptr, FALSE, "Chaos.Mutex");
                const Handle places = CreateSemaphoreA(nullptr, 1, 3, "Chaos.Places");
                const Handle own = AutoEvent();
                const HANDLE shared[] = {event, places};
                const HANDLE mixed[] = {own, event, mutex};
                SetEvent(event);
                WaitForSingleObject(event, random() % 2);
                ReleaseSemaphore(places, 1, nullptr);
                WaitForMultipleObjects(2, shared, random() % 2 == 0, random() % 2);
                if (WaitForMultipleObjects(3, mixed, FALSE, 1) % WAIT_ABANDONED_0 == 2) ReleaseMutex(mutex);
                if (WaitForSingleObject(mutex, 1) != WAIT_TIMEOUT) ReleaseMutex(mutex);
            }
        });
    }
    talk.Say("ready");
    for (std::thread& thread : threads)
        thread.join();
    return 1;
}

constexpr ChildJob kJobs[] = {
    {"answer", Answer},          {"set-when-told", SetWhenTold},
    {"wait-timer", WaitTimer},   {"hold-all", HoldAll},
    {"wait-go", WaitGo},         {"wait-places", WaitPlaces},
    {"take-places", TakePlaces}, {"die-making", DieMaking},
    {"die-first", DieFirst},     {"chaos", Chaos},
    {"stop-making", StopMaking}, {"step", StepJob},
};

}  // namespace

int main(int argc, char** argv) {
    return RunTestsOrJob(argc, argv, kJobs);
}
