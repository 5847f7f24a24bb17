#include "tests/win32/kernel/stepped_call.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "tests/win32/kernel/support.h"

namespace tk::test {
namespace {

// Each of them finds its objects open: nothing but the call itself is stepped through.

void Set(HANDLE event, HANDLE, HANDLE) {
    SetEvent(event);
}
void Release(HANDLE, HANDLE places, HANDLE) {
    ReleaseSemaphore(places, 1, nullptr);
}
void Wait(HANDLE event, HANDLE, HANDLE) {
    WaitForSingleObject(event, 1);
}
void Lock(HANDLE, HANDLE, HANDLE mutex) {
    WaitForSingleObject(mutex, 0);
    ReleaseMutex(mutex);
}
void MakeAndClose(HANDLE, HANDLE, HANDLE) {
    CloseHandle(CreateEventA(nullptr, FALSE, FALSE, "Step.New"));
}

constexpr struct {
    const char* name;
    void (*call)(HANDLE event, HANDLE places, HANDLE mutex);
} kCalls[] = {
    {"set", Set}, {"release", Release}, {"wait", Wait}, {"lock", Lock}, {"make-and-close", MakeAndClose},
};

}  // namespace

int StepJob(ChildTalk& talk) {
    const std::string name = talk.Hear();
    const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, "Step.Event");
    const HANDLE places = CreateSemaphoreA(nullptr, 0, 10, "Step.Places");
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, "Step.Mutex");
    for (const auto& row : kCalls) {
        if (name != row.name) continue;
        // Once on objects of no account, for the loader to have found everything.
        const HANDLE otherEvent = CreateEventA(nullptr, FALSE, FALSE, "Step.OtherEvent");
        const HANDLE otherPlaces = CreateSemaphoreA(nullptr, 0, 10, "Step.OtherPlaces");
        const HANDLE otherMutex = CreateMutexA(nullptr, FALSE, "Step.OtherMutex");
        row.call(otherEvent, otherPlaces, otherMutex);
        talk.Say("ready");
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(77);
        raise(SIGSTOP);
        row.call(event, places, mutex);
        raise(SIGSTOP);
        _exit(0);
    }
    return 1;
}

Stepped RunSteps(const char* call, long most) {
    ChildProcess child("step");
    child.Say(call);
    EXPECT_EQ(child.Hear(), "ready");
    int status = 0;
    waitpid(child.Id(), &status, WUNTRACED);
    Stepped result = {WIFSTOPPED(status) != 0, false, 0};
    while (result.allowed && !result.finished && result.steps < most) {
        if (ptrace(PTRACE_SINGLESTEP, child.Id(), nullptr, nullptr) != 0) {
            result.allowed = false;
            break;
        }
        waitpid(child.Id(), &status, 0);
        ++result.steps;
        result.finished = !WIFSTOPPED(status) || WSTOPSIG(status) == SIGSTOP;
    }
    return result;  // the child is killed where it is
}

}  // namespace tk::test
