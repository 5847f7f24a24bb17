// ado/odbc/spare_objects.h - a few objects that nobody uses now, kept for whoever needs one next.
//
// Threads: any, but for the end of the objects. Neither side takes a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace tk::ado {

template <class T, std::size_t Most>
class SpareObjects {
public:
    SpareObjects() = default;
    ~SpareObjects() { Clear(); }
    SpareObjects(const SpareObjects&) = delete;
    SpareObjects& operator=(const SpareObjects&) = delete;

    /// One of them, or null.
    std::unique_ptr<T> Take() noexcept {
        for (std::atomic<T*>& place : places_) {
            if (place.load(std::memory_order_relaxed) == nullptr) continue;
            if (T* const object = place.exchange(nullptr, std::memory_order_acquire)) return std::unique_ptr<T>(object);
        }
        return nullptr;
    }

    /// Ends the object when there are enough.
    void Keep(std::unique_ptr<T> object) noexcept {
        for (std::atomic<T*>& place : places_) {
            T* none = nullptr;
            if (!place.compare_exchange_strong(none, object.get(), std::memory_order_release)) continue;
            static_cast<void>(object.release());
            return;
        }
    }

    /// Ends them all.
    void Clear() noexcept {
        while (Take() != nullptr)
            ;
    }

private:
    std::array<std::atomic<T*>, Most> places_{};
};

}  // namespace tk::ado
