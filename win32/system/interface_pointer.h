// Owns one reference to an interface.
#pragma once

#include <utility>

#include "unknwn.h"

namespace tk::system {

template <class T>
class InterfacePointer {
public:
    InterfacePointer() = default;
    InterfacePointer(InterfacePointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    InterfacePointer(const InterfacePointer& other) noexcept : InterfacePointer(Shared(other.object_)) {}
    InterfacePointer& operator=(InterfacePointer other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~InterfacePointer() {
        if (object_ != nullptr) object_->Release();
    }

    /// Adds a reference of its own to a borrowed object, which may be null.
    static InterfacePointer Shared(T* object) noexcept {
        if (object != nullptr) object->AddRef();
        return Adopted(object);
    }
    /// Takes over the caller's reference.
    static InterfacePointer Adopted(T* object) noexcept {
        InterfacePointer pointer;
        pointer.object_ = object;
        return pointer;
    }

    T* Get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// Where a function stores the interface it hands out; the pointer is empty before.
    T** Receive() noexcept { return &object_; }
    void** ReceiveVoid() noexcept { return reinterpret_cast<void**>(&object_); }

private:
    T* object_ = nullptr;
};

}  // namespace tk::system
