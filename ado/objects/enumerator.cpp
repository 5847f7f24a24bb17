#include "ado/objects/enumerator.h"

#include "ado/objects/module.h"

namespace tk::ado {

Enumerator::Enumerator(std::vector<Value> items)
    : Enumerator(std::make_shared<const std::vector<Value>>(std::move(items)), 0) {}

Enumerator::Enumerator(std::shared_ptr<const std::vector<Value>> items, std::size_t next)
    : items_(std::move(items)), next_(next) {
    ++moduleUses;
}

Enumerator::~Enumerator() {
    --moduleUses;
}

HRESULT Enumerator::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!(iid == IID_IUnknown) && !(iid == IID_IEnumVARIANT)) return E_NOINTERFACE;
    *object = static_cast<IEnumVARIANT*>(this);
    AddRef();
    return S_OK;
}

ULONG Enumerator::AddRef() {
    return references_.fetch_add(1, std::memory_order_relaxed) + 1;
}

ULONG Enumerator::Release() {
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
}

HRESULT Enumerator::Next(ULONG wanted, VARIANT* items, ULONG* given) {
    if (given != nullptr) *given = 0;
    if (items == nullptr || (given == nullptr && wanted != 1)) return E_POINTER;
    ULONG done = 0;
    for (; done < wanted && next_ < items_->size(); ++done) {
        VariantInit(&items[done]);
        if (FAILED(VariantCopy(&items[done], &(*items_)[next_].Get()))) {
            while (done > 0)
                VariantClear(&items[--done]);
            return E_OUTOFMEMORY;
        }
        ++next_;
    }
    if (given != nullptr) *given = done;
    return done == wanted ? S_OK : S_FALSE;
}

HRESULT Enumerator::Skip(ULONG count) {
    const std::size_t left = items_->size() - next_;
    next_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
}

HRESULT Enumerator::Reset() {
    next_ = 0;
    return S_OK;
}

HRESULT Enumerator::Clone(IEnumVARIANT** copy) {
    if (copy == nullptr) return E_POINTER;
    *copy = new (std::nothrow) Enumerator(items_, next_);
    return *copy == nullptr ? E_OUTOFMEMORY : S_OK;
}

}  // namespace tk::ado
