// Events, semaphores and waits: what a signal, a hand-over between processes, and an object cost.
#include <benchmark/benchmark.h>
#include <linux/futex.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "wrong answer: %s\n", what);
    std::exit(1);
}

void SetAndWait(benchmark::State& state, const char* name) {
    const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, name);
    Require(SetEvent(event) && WaitForSingleObject(event, 0) == WAIT_OBJECT_0 &&
                WaitForSingleObject(event, 0) == WAIT_TIMEOUT,
            "an event is one signal");
    for (auto _ : state) {
        SetEvent(event);
        benchmark::DoNotOptimize(WaitForSingleObject(event, 0));
    }
    CloseHandle(event);
}
BENCHMARK_CAPTURE(SetAndWait, unnamed, nullptr);
BENCHMARK_CAPTURE(SetAndWait, named, "bench.SetAndWait");

void ReleaseAndWait(benchmark::State& state) {
    const HANDLE semaphore = CreateSemaphoreA(nullptr, 0, 10, "bench.ReleaseAndWait");
    for (auto _ : state) {
        ReleaseSemaphore(semaphore, 1, nullptr);
        benchmark::DoNotOptimize(WaitForSingleObject(semaphore, 0));
    }
    CloseHandle(semaphore);
}
BENCHMARK(ReleaseAndWait);

void TakeAndReleaseMutex(benchmark::State& state) {
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, "bench.Mutex");
    for (auto _ : state) {
        benchmark::DoNotOptimize(WaitForSingleObject(mutex, 0));
        ReleaseMutex(mutex);
    }
    CloseHandle(mutex);
}
BENCHMARK(TakeAndReleaseMutex);

/// Another process that runs `body` until this one is done with it.
class Partner {
public:
    template <typename Body>
    explicit Partner(Body body) : process_(fork()) {
        if (process_ != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        body();
        _exit(0);
    }
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;
    ~Partner() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

private:
    pid_t process_;
};

/// The least a hand-over can be made of: a number, a wake, a sleep.
class BareFutex {
public:
    void Set() {
        word_.store(1, std::memory_order_release);
        syscall(SYS_futex, &word_, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
    void Wait() {
        while (word_.exchange(0, std::memory_order_acquire) == 0)
            syscall(SYS_futex, &word_, FUTEX_WAIT, 0, nullptr, nullptr, 0);
    }

private:
    std::atomic<int> word_{0};
};

template <typename Round>
double Nanoseconds(int rounds, Round round) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < rounds; ++i)
        round();
    const auto spent = std::chrono::steady_clock::now() - start;
    return std::chrono::duration<double, std::nano>(spent).count() / rounds;
}

/// Keeps this process, and those it starts meanwhile, on the CPU it runs on.
class OneCpu {
public:
    OneCpu() {
        sched_getaffinity(0, sizeof before_, &before_);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    OneCpu(const OneCpu&) = delete;
    OneCpu& operator=(const OneCpu&) = delete;
    ~OneCpu() { sched_setaffinity(0, sizeof before_, &before_); }

private:
    cpu_set_t before_;
};

/// There and back between two processes, events and bare futexes by turns so that both see the same machine. On one
/// CPU: on two it is the time to wake an idle one, which differs tenfold from one moment to the next.
void PingPong(benchmark::State& state) {
    const OneCpu one;
    void* memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* futexes = new (memory) BareFutex[2];
    const HANDLE go = CreateEventA(nullptr, FALSE, FALSE, "bench.Go");
    const HANDLE back = CreateEventA(nullptr, FALSE, FALSE, "bench.Back");
    Partner futexPartner([&] {
        for (;;) {
            futexes[0].Wait();
            futexes[1].Set();
        }
    });
    Partner eventPartner([&] {
        const HANDLE childGo = OpenEventA(EVENT_ALL_ACCESS, FALSE, "bench.Go");
        const HANDLE childBack = OpenEventA(EVENT_ALL_ACCESS, FALSE, "bench.Back");
        for (;;) {
            WaitForSingleObject(childGo, INFINITE);
            SetEvent(childBack);
        }
    });
    SetEvent(go);
    Require(WaitForSingleObject(back, 10'000) == WAIT_OBJECT_0, "the other process answers");

    constexpr int kRounds = 500;
    double futex = 0;
    double event = 0;
    int batches = 0;
    for (auto _ : state) {
        futex += Nanoseconds(kRounds, [&] {
            futexes[0].Set();
            futexes[1].Wait();
        });
        event += Nanoseconds(kRounds, [&] {
            SetEvent(go);
            WaitForSingleObject(back, INFINITE);
        });
        ++batches;
    }
    state.counters["futex_ns"] = futex / batches;
    state.counters["event_ns"] = event / batches;
    state.counters["ratio"] = event / futex;
    CloseHandle(go);
    CloseHandle(back);
    munmap(memory, 4096);
}
BENCHMARK(PingPong)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

void CreateAndClose(benchmark::State& state, const char* name) {
    // Another name keeps the shared memory there, as in a program that has more than one object.
    const HANDLE keep = CreateEventA(nullptr, FALSE, FALSE, "bench.Keep");
    for (auto _ : state)
        CloseHandle(CreateEventA(nullptr, FALSE, FALSE, name));
    CloseHandle(keep);
}
BENCHMARK_CAPTURE(CreateAndClose, unnamed, nullptr);
BENCHMARK_CAPTURE(CreateAndClose, named, "bench.CreateAndClose");

void CreateAndCloseTheOnlyOne(benchmark::State& state) {
    for (auto _ : state)
        CloseHandle(CreateEventA(nullptr, FALSE, FALSE, "bench.Only"));
}
BENCHMARK(CreateAndCloseTheOnlyOne);

void OpenByName(benchmark::State& state) {
    std::vector<HANDLE> handles;
    for (int i = 0; i < state.range(0); ++i)
        handles.push_back(CreateEventA(nullptr, FALSE, FALSE, ("bench.Open." + std::to_string(i)).c_str()));
    const std::string name = "bench.Open." + std::to_string(state.range(0) / 2);
    for (auto _ : state)
        CloseHandle(OpenEventA(EVENT_ALL_ACCESS, FALSE, name.c_str()));
    for (HANDLE handle : handles)
        CloseHandle(handle);
}
BENCHMARK(OpenByName)->Arg(1)->Arg(5000)->ArgName("among");

/// The last of n objects is signalled and taken.
void WaitForAny(benchmark::State& state) {
    std::vector<HANDLE> handles;
    for (int i = 0; i < state.range(0); ++i)
        handles.push_back(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const auto count = static_cast<DWORD>(handles.size());
    for (auto _ : state) {
        SetEvent(handles.back());
        benchmark::DoNotOptimize(WaitForMultipleObjects(count, handles.data(), FALSE, 0));
    }
    Require(WaitForMultipleObjects(count, handles.data(), FALSE, 0) == WAIT_TIMEOUT, "each signal was taken");
    for (HANDLE handle : handles)
        CloseHandle(handle);
}
BENCHMARK(WaitForAny)->Arg(2)->Arg(16)->Arg(64)->ArgName("objects");

void WaitForAll(benchmark::State& state) {
    std::vector<HANDLE> handles;
    for (int i = 0; i < state.range(0); ++i)
        handles.push_back(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const auto count = static_cast<DWORD>(handles.size());
    for (auto _ : state) {
        for (HANDLE handle : handles)
            SetEvent(handle);
        benchmark::DoNotOptimize(WaitForMultipleObjects(count, handles.data(), TRUE, 0));
    }
    Require(WaitForMultipleObjects(count, handles.data(), FALSE, 0) == WAIT_TIMEOUT, "all were taken");
    for (HANDLE handle : handles)
        CloseHandle(handle);
}
BENCHMARK(WaitForAll)->Arg(2)->Arg(16)->Arg(64)->ArgName("objects");

}  // namespace

BENCHMARK_MAIN();
