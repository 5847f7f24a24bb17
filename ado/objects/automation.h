// ado/objects/automation.h - what every object of the model shares: references, names, calls by id, error records.
//
//   class Errors final : public Automation<Errors> {
//   public:
//       static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Errors");
//       static std::span<const Member<Errors>> Members();
//   private:
//       void GetCount(Call& call);
//   };
//
// The table is sorted by id and then by kind; the dispatch knows it and nothing else.
//
// Threads: any thread, one caller at a time for each object unless a member says otherwise.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "ado/error.h"
#include "ado/objects/call.h"
#include "ado/objects/error_list.h"

namespace tk::ado {

enum MemberKind : WORD {
    kMethod = DISPATCH_METHOD,
    kGet = DISPATCH_PROPERTYGET,
    kPut = DISPATCH_PROPERTYPUT,
    kPutRef = DISPATCH_PROPERTYPUTREF,
};

/// One way to call a member. An id appears once for each kind; a member of two generations has a row for each id.
struct MemberInfo {
    DISPID id;
    MemberKind kind;
    const OLECHAR* name;
    unsigned char least;  // arguments, the value of a put included
    unsigned char most;
};

template <class T>
struct Member : MemberInfo {
    void (T::*handler)(Call& call);

    // The analyzer does not follow the initialisation of an aggregate base.
    constexpr Member(DISPID memberId, MemberKind memberKind, const OLECHAR* memberName, void (T::*run)(Call&),
                     unsigned char leastArguments = 0, int mostArguments = -1)
        : MemberInfo{memberId, memberKind, memberName, leastArguments,
                     static_cast<unsigned char>(mostArguments < 0 ? leastArguments : mostArguments)},
          handler(run) {}  // NOLINT(clang-analyzer-optin.cplusplus.UninitializedObject)
};

constexpr bool IsBefore(const MemberInfo& first, const MemberInfo& second) noexcept {
    return first.id != second.id ? first.id < second.id : first.kind < second.kind;
}

/// For the static_assert beside each table: in order, and no way to call named twice.
template <class T, std::size_t Count>
constexpr bool IsMemberTable(const Member<T> (&table)[Count]) noexcept {
    if (Count >= 255) return false;  // more than MemberPlaces can number
    for (std::size_t i = 1; i < Count; ++i) {
        if (!IsBefore(table[i - 1], table[i])) return false;
    }
    return true;
}

/// The places of a table's rows by id and kind: a call costs one look instead of a search.
class MemberPlaces {
public:
    template <class Table>
    explicit MemberPlaces(const Table& table) {
        places_.fill(kNone);
        for (std::size_t i = 0; i < table.size(); ++i) {
            std::size_t at = Begin(table[i].id, table[i].kind);
            while (places_[at] != kNone)
                at = Next(at);
            places_[at] = static_cast<std::uint8_t>(i);
        }
    }

    template <class Table>
    const MemberInfo* Find(const Table& table, DISPID id, MemberKind kind) const noexcept {
        for (std::size_t at = Begin(id, kind); places_[at] != kNone; at = Next(at)) {
            const MemberInfo& found = table[places_[at]];
            if (found.id == id && found.kind == kind) return &found;
        }
        return nullptr;
    }

private:
    static constexpr std::size_t kSize = 512;  // more than twice as many as the largest table has rows
    static constexpr std::uint8_t kNone = 255;

    static std::size_t Begin(DISPID id, MemberKind kind) noexcept {
        return (static_cast<std::size_t>(id) * 8 + kind) % kSize;
    }
    static std::size_t Next(std::size_t at) noexcept { return (at + 1) % kSize; }

    std::array<std::uint8_t, kSize> places_;
};

class AutomationObject : public IDispatch {
public:
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() final;
    ULONG STDMETHODCALLTYPE Release() final;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) final;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) final;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) final;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argument) final;
    using IUnknown::QueryInterface;

    /// One more reference, from whoever holds none: refused once the last one is gone.
    bool TryAddRef() noexcept;

protected:
    AutomationObject();
    virtual ~AutomationObject();

    virtual const MemberInfo* FindMember(DISPID id, MemberKind kind) const noexcept = 0;
    virtual const MemberInfo* FindName(std::u16string_view name) const noexcept = 0;
    virtual void Run(const MemberInfo& member, Call& call) = 0;
    virtual const OLECHAR* ClassName() const noexcept = 0;

    /// Where the records of provider failures go; empty for objects without a connection.
    virtual std::shared_ptr<ErrorList> Errors() const { return {}; }

private:
    const MemberInfo* Choose(DISPID id, WORD flags, const DISPPARAMS& parameters) const noexcept;
    HRESULT Report(const std::exception& cause, EXCEPINFO* exception) const noexcept;

    static constexpr ULONG kEnding = 0x40000000;  // no number of references that anybody holds
    std::atomic<ULONG> references_{1};
};

template <class T>
class Automation : public AutomationObject {
protected:
    const MemberInfo* FindMember(DISPID id, MemberKind kind) const noexcept final {
        static const MemberPlaces places(T::Members());
        return places.Find(T::Members(), id, kind);
    }
    const MemberInfo* FindName(std::u16string_view name) const noexcept final;
    void Run(const MemberInfo& member, Call& call) final {
        (static_cast<T*>(this)->*static_cast<const Member<T>&>(member).handler)(call);
    }
    const OLECHAR* ClassName() const noexcept final { return T::kClassName; }
};

/// The member names of every table compare like this.
bool IsMemberName(const OLECHAR* known, std::u16string_view asked) noexcept;

template <class T>
const MemberInfo* Automation<T>::FindName(std::u16string_view name) const noexcept {
    const auto table = T::Members();
    const auto found =
        std::ranges::find_if(table, [&](const MemberInfo& member) { return IsMemberName(member.name, name); });
    return found == table.end() ? nullptr : &*found;
}

/// The object of this server behind an interface, or none.
/// @param kind  the identifier that objects of the class answer with themselves
template <class T>
Ref<T> KnownObject(IUnknown* object, REFIID kind) {
    void* known = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(kind, &known))) return {};
    return Ref<T>::Adopt(static_cast<T*>(known));
}

}  // namespace tk::ado
