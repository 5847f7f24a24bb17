// registered_class.h - stands in for a class: what the program creates by its identifier comes from the test.
//
//   Apartment apartment;
//   RegisteredClass connections(kConnectionClass);
//   connections.Give(connection.Get());     // the next creation hands out this object
//   connections.Refuse(E_ACCESSDENIED);     // the one after it fails
//
// A creation that was not announced fails with E_UNEXPECTED. The class is gone when the object is.
// Threads: one at a time.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <deque>

#include "support/held.h"

namespace tk::test {

inline constexpr CLSID kConnectionClass = {
    0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
inline constexpr CLSID kRecordsetClass = {0x00000535, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

/// COM, started for this thread.
class Apartment {
public:
    Apartment() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

class RegisteredClass {
public:
    explicit RegisteredClass(REFCLSID clsid);
    RegisteredClass(const RegisteredClass&) = delete;
    RegisteredClass& operator=(const RegisteredClass&) = delete;
    ~RegisteredClass();

    /// The next creation that nothing was announced for hands out this object, with a reference of its own.
    void Give(IUnknown* object);
    /// The next creation that nothing was announced for fails.
    void Refuse(HRESULT result);
    /// The creations so far, failed ones included.
    int Created() const;

private:
    class Factory;
    Held<Factory> factory_;
    DWORD cookie_ = 0;
};

}  // namespace tk::test
