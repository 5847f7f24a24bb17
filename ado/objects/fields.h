// ado/objects/fields.h - the Fields collection of a recordset, and one Field of it.
//
// Both keep their recordset alive. A field belongs to one opening: after a Close its values say "closed", after another
// Open it is no longer valid.
#pragma once

#include "ado/objects/collection.h"
#include "ado/objects/properties.h"
#include "ado/objects/recordset.h"

namespace tk::ado {

class Field final : public Automation<Field>, public PropertySource {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Field");
    static std::span<const Member<Field>> Members();

    Field(Ref<Recordset> owner, std::size_t column)
        : owner_(std::move(owner)), column_(column), generation_(owner_->Generation()) {}

    // --- PropertySource ---
    std::size_t PropertyCount() override;
    PropertyInfo DescribeProperty(std::size_t index) override;
    Value ReadProperty(std::size_t index) override;
    void WriteProperty(std::size_t index, const Value& value) override;
    std::shared_ptr<ErrorList> PropertyErrors() const override { return owner_->PropertyErrors(); }

protected:
    std::shared_ptr<ErrorList> Errors() const override { return owner_->PropertyErrors(); }

private:
    void GetValue(Call& call);
    void PutValue(Call& call);
    void GetName(Call& call);
    void GetType(Call& call);
    void PutType(Call& call);
    void GetDefinedSize(Call& call);
    void PutDefinedSize(Call& call);
    void GetOriginalValue(Call& call);
    void GetUnderlyingValue(Call& call);
    void AppendChunk(Call& call);
    void GetChunk(Call& call);
    void GetActualSize(Call& call);
    void GetPrecision(Call& call);
    void PutPrecision(Call& call);
    void GetNumericScale(Call& call);
    void PutNumericScale(Call& call);
    void GetAttributes(Call& call);
    void PutAttributes(Call& call);
    void GetDataFormat(Call& call);
    void PutRefDataFormat(Call& call);
    void GetStatus(Call& call);
    void GetProperties(Call& call);

    /// The column described; throws when the field is of another opening.
    const Column& Description();
    Column& Definition();

    /// The number of the column in an open recordset. @throws AdoError 3704, 3420
    std::size_t OpenColumn();

    Ref<Recordset> owner_;
    std::size_t column_;
    unsigned generation_;
    bool optimize_ = false;
};

class Fields final : public Collection<Fields> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Fields");
    static std::span<const Member<Fields>> Members();

    explicit Fields(Ref<Recordset> owner) : owner_(std::move(owner)) {}

    std::size_t ItemCount() const { return owner_->Columns().size(); }
    std::size_t FindItem(const VARIANT& index) const;
    Ref<Field> MakeItem(std::size_t index) const { return Make<Field>(owner_, index); }

protected:
    std::shared_ptr<ErrorList> Errors() const override { return owner_->PropertyErrors(); }

private:
    void Append(Call& call);
    void Delete(Call& call);
    void RefuseRecordOnly(Call& call);

    Ref<Recordset> owner_;
};

/// A column as Fields.Append describes it. @throws AdoError 3001 for a type that no value has
Column MakeColumn(std::u16string name, LONG type, LONG definedSize, LONG attributes);

}  // namespace tk::ado
