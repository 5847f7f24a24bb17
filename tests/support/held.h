// held.h - one reference to an object, given back at the end.
//
//   Held<IDispatch> object(database.OpenSchema(20));  // takes over
#pragma once

#include <utility>

namespace tk::test {

template <typename T>
class Held {
public:
    Held() = default;
    explicit Held(T* object) : object_(object) {}
    Held(const Held& other) : object_(other.object_) {
        if (object_ != nullptr) object_->AddRef();
    }
    Held(Held&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Held& operator=(Held other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Held() {
        if (object_ != nullptr) object_->Release();
    }

    T* Get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    /// A reference of its own, for a receiver that takes one over.
    T* Share() const {
        object_->AddRef();
        return object_;
    }
    T* Detach() { return std::exchange(object_, nullptr); }

private:
    T* object_ = nullptr;
};

}  // namespace tk::test
