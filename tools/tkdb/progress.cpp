#include "tools/tkdb/progress.h"

#include <fmt/format.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace tk::tools {
namespace {

constexpr long long kFirstShownMs = 500;
constexpr long long kRedrawMs = 100;

long long NowMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1'000'000;
}

}  // namespace

Progress::Progress(std::string label)
    : label_(std::move(label)), started_(NowMs()), terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (visible_) fmt::print(stderr, "\r\x1b[K");
}

void Progress::Advance(std::size_t count) {
    done_ += count;
    // The clock is read once in 256 rows: a look at it costs more than a row.
    if (terminal_ && (done_ & 0xFF) < count) Draw();
}

void Progress::Draw() {
    const long long now = NowMs();
    if (now - started_ < kFirstShownMs || now - drawn_ < kRedrawMs) return;
    drawn_ = now;
    visible_ = true;
    const long long elapsed = now - started_;
    fmt::print(stderr, "\r\x1b[K{}: {} ({} /s)", label_, done_, static_cast<long long>(done_) * 1000 / elapsed);
    std::fflush(stderr);
}

ByteProgress::ByteProgress(std::string label, std::function<std::uintmax_t()> bytes)
    : label_(std::move(label)), bytes_(std::move(bytes)) {
    if (isatty(STDERR_FILENO) != 0) watcher_ = std::thread([this] { Watch(); });
}

ByteProgress::~ByteProgress() {
    if (!watcher_.joinable()) return;
    {
        const std::lock_guard guard(lock_);
        isOver_ = true;
    }
    over_.notify_one();
    watcher_.join();
}

void ByteProgress::Watch() {
    const long long started = NowMs();
    const auto isOver = [this] { return isOver_; };
    std::unique_lock guard(lock_);
    bool visible = false;
    for (long long pause = kFirstShownMs; !over_.wait_for(guard, std::chrono::milliseconds(pause), isOver);
         pause = kRedrawMs) {
        visible = true;
        fmt::print(stderr, "\r\x1b[K{}: {:.1f} MB, {} s", label_, static_cast<double>(bytes_()) / 1e6,
                   (NowMs() - started) / 1000);
        std::fflush(stderr);
    }
    if (visible) fmt::print(stderr, "\r\x1b[K");
}

}  // namespace tk::tools
