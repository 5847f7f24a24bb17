#include "tkwin32/thread_messages.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "winbase.h"
#include "winerror.h"

namespace tk::system {
namespace {

constexpr std::size_t kMostMessages = 10000;

struct Filter {
    UINT first;
    UINT last;

    bool Lets(UINT message) const noexcept {
        const bool all = first == 0 && last == 0;
        return all || message == WM_QUIT || (message >= first && message <= last);
    }
};

class Queue {
public:
    bool Add(const MSG& message) {
        {
            const std::lock_guard lock(gate_);
            if (messages_.size() >= kMostMessages) return false;
            messages_.push_back(message);
        }
        arrived_.notify_one();
        return true;
    }

    void Quit(int code) {
        const std::lock_guard lock(gate_);
        quit_ = code;
    }

    std::optional<MSG> Find(const Filter& filter, bool remove) {
        const std::lock_guard lock(gate_);
        return FindLocked(filter, remove);
    }

    MSG Wait(const Filter& filter) {
        std::unique_lock lock(gate_);
        std::optional<MSG> found;
        arrived_.wait(lock, [&] { return (found = FindLocked(filter, true)).has_value(); });
        return *found;
    }

private:
    std::optional<MSG> FindLocked(const Filter& filter, bool remove) {
        const auto at =
            std::ranges::find_if(messages_, [&](const MSG& message) { return filter.Lets(message.message); });
        if (at != messages_.end()) {
            const MSG found = *at;
            if (remove) messages_.erase(at);
            return found;
        }
        if (!quit_) return std::nullopt;
        MSG quit{};
        quit.message = WM_QUIT;
        quit.wParam = static_cast<WPARAM>(*quit_);
        quit.time = GetTickCount();
        if (remove) quit_.reset();
        return quit;
    }

    std::mutex gate_;
    std::condition_variable arrived_;
    std::deque<MSG> messages_;
    std::optional<int> quit_;
};

struct Queues {
    std::mutex gate;
    std::map<DWORD, std::shared_ptr<Queue>> byThread;
};

// Never destroyed: threads may outlive the static objects of the program.
Queues& TheQueues() {
    static auto& queues = *new Queues;
    return queues;
}

std::shared_ptr<Queue> FindQueue(DWORD thread) {
    Queues& queues = TheQueues();
    const std::lock_guard lock(queues.gate);
    const auto found = queues.byThread.find(thread);
    return found != queues.byThread.end() ? found->second : nullptr;
}

/// This thread's queue, which others find until the thread ends.
class OwnQueue {
public:
    OwnQueue() {
        Queues& queues = TheQueues();
        const std::lock_guard lock(queues.gate);
        queues.byThread[thread_] = queue_;
    }
    OwnQueue(const OwnQueue&) = delete;
    OwnQueue& operator=(const OwnQueue&) = delete;
    ~OwnQueue() {
        Queues& queues = TheQueues();
        const std::lock_guard lock(queues.gate);
        queues.byThread.erase(thread_);
    }

    Queue& Get() noexcept { return *queue_; }

private:
    const DWORD thread_ = GetCurrentThreadId();
    const std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();  // a poster may still hold it
};

Queue& ThisQueue() {
    thread_local OwnQueue own;
    return own.Get();
}

/// Whether messages of the thread are asked for, not those of a window.
bool IsOfThread(HWND window) noexcept {
    return window == nullptr || reinterpret_cast<LONG_PTR>(window) == -1;
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

BOOL PostThreadMessageA(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam) {
    const std::shared_ptr<Queue> queue = FindQueue(idThread);
    if (queue == nullptr) {
        SetLastError(ERROR_INVALID_THREAD_ID);
        return FALSE;
    }
    const MSG message = {nullptr, Msg, wParam, lParam, GetTickCount(), {0, 0}};
    if (queue->Add(message)) return TRUE;
    SetLastError(ERROR_NOT_ENOUGH_QUOTA);
    return FALSE;
}

BOOL PeekMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg) {
    if (lpMsg == nullptr) {
        SetLastError(ERROR_NOACCESS);
        return FALSE;
    }
    if (!IsOfThread(hWnd)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    const auto found = ThisQueue().Find({wMsgFilterMin, wMsgFilterMax}, (wRemoveMsg & PM_REMOVE) != 0);
    if (found) *lpMsg = *found;
    return found ? TRUE : FALSE;
}

BOOL GetMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax) {
    if (lpMsg == nullptr || !IsOfThread(hWnd)) {
        SetLastError(lpMsg == nullptr ? ERROR_NOACCESS : ERROR_INVALID_WINDOW_HANDLE);
        return -1;
    }
    *lpMsg = ThisQueue().Wait({wMsgFilterMin, wMsgFilterMax});
    return lpMsg->message == WM_QUIT ? FALSE : TRUE;
}

VOID PostQuitMessage(int nExitCode) {
    ThisQueue().Quit(nExitCode);
}
