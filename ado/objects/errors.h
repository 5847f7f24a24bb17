// ado/objects/errors.h - the Errors collection of a connection, and one Error of it.
#pragma once

#include <memory>

#include "ado/objects/collection.h"
#include "ado/objects/error_list.h"

namespace tk::ado {

/// A copy of one record: it outlives the failure that follows it.
class Error final : public Automation<Error> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Error");
    static std::span<const Member<Error>> Members();

    explicit Error(ErrorRecord record) : record_(std::move(record)) {}

private:
    void GetDescription(Call& call);
    void GetNumber(Call& call);
    void GetSource(Call& call);
    void GetHelpFile(Call& call);
    void GetHelpContext(Call& call);
    void GetSqlState(Call& call);
    void GetNativeError(Call& call);

    ErrorRecord record_;
};

class Errors final : public Collection<Errors> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Errors");
    static std::span<const Member<Errors>> Members();

    explicit Errors(std::shared_ptr<ErrorList> list) : list_(std::move(list)) {}

    std::size_t ItemCount() const { return list_->Count(); }
    std::size_t FindItem(const VARIANT& index) const;
    Ref<Error> MakeItem(std::size_t index) const;

private:
    void Clear(Call& call);

    std::shared_ptr<ErrorList> list_;
};

}  // namespace tk::ado
