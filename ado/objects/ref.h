// ado/objects/ref.h - holds one reference to a component.
//
//   Ref<Connection> connection = Make<Connection>();
//   call.ReturnObject(connection.Detach());
#pragma once

#include <utility>

namespace tk::ado {

template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}

    /// Shares an object that somebody else holds too.
    explicit Ref(T* shared) noexcept : object_(shared) {
        if (object_ != nullptr) object_->AddRef();
    }

    /// Takes over a reference.
    static Ref Adopt(T* owned) noexcept {
        Ref taken;
        taken.object_ = owned;
        return taken;
    }
    Ref(const Ref& other) noexcept : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) object_->Release();
    }

    T* Get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Gives the reference to the caller.
    T* Detach() noexcept { return std::exchange(object_, nullptr); }
    T** Out() noexcept {
        *this = Ref();
        return &object_;
    }

private:
    T* object_ = nullptr;
};

/// A new object; its first reference is the result's.
template <class T, class... Arguments>
Ref<T> Make(Arguments&&... arguments) {
    return Ref<T>::Adopt(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace tk::ado
