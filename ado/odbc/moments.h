// ado/odbc/moments.h - waiting for something that is nearly always over at once.
#pragma once

#include <chrono>
#include <thread>

namespace tk::ado {

/// One moment after the other, longer ones once it has lasted.
class Moments {
public:
    void Wait() noexcept {
        constexpr int kShort = 100;
        if (count_ < kShort) {
            ++count_;
            std::this_thread::yield();
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

private:
    int count_ = 0;
};

}  // namespace tk::ado
