// ado/objects/enumerator.h - "for each" over the items that a collection had when it began.
//
// Threads: any, one caller at a time.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <memory>
#include <vector>

#include "ado/cursor/value.h"

namespace tk::ado {

class Enumerator final : public IEnumVARIANT {
public:
    explicit Enumerator(std::vector<Value> items);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* items, ULONG* given) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override;
    using IUnknown::QueryInterface;

private:
    Enumerator(std::shared_ptr<const std::vector<Value>> items, std::size_t next);
    ~Enumerator();

    std::atomic<ULONG> references_{1};
    std::shared_ptr<const std::vector<Value>> items_;
    std::size_t next_ = 0;
};

}  // namespace tk::ado
