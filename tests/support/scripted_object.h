// scripted_object.h - automation objects that answer as a test tells them, and write down every call they get.
//
//   Journal journal;
//   auto connection = ScriptedObject::Make("connection", &journal);
//   connection->On(Get(18)).Returns(Long(1));
//   connection->On(Call(10)).Fails("no server");
//   connection->On(Get(1006)).Returns(Flag(false)).Then().Returns(Flag(true));  // the last answer repeats
//   ...
//   EXPECT_THAT(journal.Take(), ElementsAre("connection.get 18", "connection.call 10 (BSTR \"DSN=x\", I4 -1)"));
//
// A call without a script succeeds with an empty result. A line names the object, the kind of call, the identifier and
// the arguments in their order; a property put that comes without its named argument is marked "unnamed".
//
// Threads: one at a time.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/held.h"
#include "support/values.h"

namespace tk::test {

/// The lines of all objects that share it.
class Journal {
public:
    void Add(std::string line) { lines_.push_back(std::move(line)); }
    const std::vector<std::string>& Lines() const { return lines_; }
    /// Gives the lines so far and forgets them.
    std::vector<std::string> Take() { return std::exchange(lines_, {}); }

private:
    std::vector<std::string> lines_;
};

/// One member of an object, called in one way.
struct Member {
    DISPID id;
    WORD kind;
    auto operator<=>(const Member&) const = default;
};

constexpr Member Get(long id) {
    return {static_cast<DISPID>(id), DISPATCH_PROPERTYGET};
}
constexpr Member Put(long id) {
    return {static_cast<DISPID>(id), DISPATCH_PROPERTYPUT};
}
constexpr Member PutRef(long id) {
    return {static_cast<DISPID>(id), DISPATCH_PROPERTYPUTREF};
}
constexpr Member Call(long id) {
    return {static_cast<DISPID>(id), DISPATCH_METHOD};
}

/// The arguments of one call, first argument first; borrowed.
using Arguments = std::vector<VARIANT*>;

/// What one member does: a row of answers, of which the last one repeats.
class Script {
public:
    Script& Returns(COleVariant value);
    /// Puts a value into the argument of that position (from 0), which has to be a VARIANT by reference.
    Script& Stores(std::size_t position, COleVariant value);
    /// Computes the answer.
    Script& Does(std::function<COleVariant(const Arguments&)> action);
    /// Fails with DISP_E_EXCEPTION and a description; null leaves even the description out.
    Script& Fails(const char* description, SCODE code = E_FAIL);
    /// Fails with a code and nothing else.
    Script& FailsWith(HRESULT result);
    /// What follows describes the next call.
    Script& Then();

private:
    friend class ScriptedObject;
    struct Answer {
        COleVariant value;
        std::vector<std::pair<std::size_t, COleVariant>> stored;
        std::function<COleVariant(const Arguments&)> action;
        HRESULT result = S_OK;
        const char* description = nullptr;
        SCODE code = S_OK;
    };
    HRESULT Run(const Arguments& arguments, VARIANT* result, EXCEPINFO* exception);

    std::deque<Answer> answers_ = std::deque<Answer>(1);
};

class ScriptedObject final : public IDispatch {
public:
    /// @param journal  outlives the object; null records nothing
    static Held<ScriptedObject> Make(std::string name, Journal* journal);
    /// The objects that exist.
    static int Alive();
    /// The name of a scripted object; "" for every other object.
    static std::string NameOf(IUnknown* object);

    /// The script of one member, empty at first.
    Script& On(Member member) { return scripts_[member]; }
    /// QueryInterface answers iid with this object, which is borrowed and outlives this one.
    void Offer(REFIID iid, IUnknown* object) { offers_.emplace_back(iid, object); }
    /// Called at the beginning of every call, scripted or not; may throw, or fault.
    void BeforeEachCall(std::function<void()> hook) { before_ = std::move(hook); }
    /// How often an interface was asked for.
    int Asked(REFIID iid) const;
    ULONG References() const { return references_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argument) override;

private:
    ScriptedObject(std::string name, Journal* journal);
    ~ScriptedObject();

    std::string name_;
    Journal* journal_;
    ULONG references_ = 1;
    std::map<Member, Script> scripts_;
    std::vector<std::pair<IID, IUnknown*>> offers_;
    std::vector<IID> asked_;
    std::function<void()> before_;
};

}  // namespace tk::test
