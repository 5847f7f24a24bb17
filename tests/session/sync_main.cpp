// The tests of events, semaphores and timers, and the jobs of their child processes.
#include "tests/support/child_process.h"
#include "tkkernel/sync.h"

using namespace tk::test;

namespace {

int AnswerEvent(ChildTalk& talk) {
    CTEvent go;
    CTEvent done;
    if (!go.OpenEventA(talk.Hear().c_str()) || !done.OpenEventA(talk.Hear().c_str())) return 1;
    talk.Say("ready");
    for (int i = 0; i < 20; ++i) {
        if (!go.WaitForEvent(20000) || !done.SetEvent()) return 2;
    }
    return 0;
}

int HoldEvent(ChildTalk& talk) {
    CTEvent event;
    if (!event.OpenEventA(talk.Hear().c_str())) return 1;
    talk.Say("ready");
    talk.Hear();
    return 0;
}

int WaitEvent(ChildTalk& talk) {
    CTEvent event;
    if (!event.OpenEventA(talk.Hear().c_str())) return 1;
    talk.Say("ready");
    return event.WaitForEvent(60000) ? 0 : 2;
}

int PassGate(ChildTalk& talk) {
    CTSemaphore gate;
    if (!gate.OpenSemaphoreA(talk.Hear().c_str())) return 1;
    talk.Say("ready");
    return gate.WaitSemaphore(20000) ? 0 : 2;
}

constexpr ChildJob kJobs[] = {
    {"answer-event", AnswerEvent},
    {"hold-event", HoldEvent},
    {"wait-event", WaitEvent},
    {"pass-gate", PassGate},
};

}  // namespace

int main(int argc, char** argv) {
    return RunTestsOrJob(argc, argv, kJobs);
}
