// ado/objects/anchor.h - a way back to an object that may have ended in the meantime, without keeping it.
//
//   source->anchor_ = std::make_shared<Anchor<Recordset>>(*source);   // its destructor calls Leave
//   Ref<Recordset> found = anchor->Find();                            // none when it is gone
//
// Threads: any.
#pragma once

#include <mutex>

#include "ado/objects/ref.h"

namespace tk::ado {

/// @tparam T  has TryAddRef, which refuses once the last reference is gone
template <class T>
class Anchor {
public:
    explicit Anchor(T& object) noexcept : object_(&object) {}
    Anchor(const Anchor&) = delete;
    Anchor& operator=(const Anchor&) = delete;

    Ref<T> Find() const noexcept {
        const std::lock_guard lock(mutex_);
        return object_ != nullptr && object_->TryAddRef() ? Ref<T>::Adopt(object_) : Ref<T>();
    }
    void Leave() noexcept {
        const std::lock_guard lock(mutex_);
        object_ = nullptr;
    }

private:
    mutable std::mutex mutex_;
    T* object_;
};

}  // namespace tk::ado
