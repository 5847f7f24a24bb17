// ado/objects/parameter_object.h - one Parameter of a command: how it is declared, and its value.
#pragma once

#include <optional>

#include "ado/objects/automation.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// Asked from an IUnknown, tells a Parameter of this server; gives the Parameter itself.
inline constexpr IID kParameterObject = {0x9B2F4C17, 0x6E05, 0x4A83, {0x91, 0x3D, 0x55, 0xC8, 0x0A, 0xE7, 0x24, 0x6B}};

/// How a parameter is declared.
struct ParameterDeclaration {
    std::u16string name;
    LONG type = 0;       // DataTypeEnum; 0: not said yet
    LONG direction = 1;  // ParameterDirectionEnum
    LONG size = 0;       // characters or bytes
    BYTE precision = 0;
    BYTE scale = 0;
    LONG attributes = 0;
};

class ParameterObject final : public Automation<ParameterObject> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Parameter");
    static std::span<const Member<ParameterObject>> Members();

    ParameterObject() = default;
    explicit ParameterObject(ParameterDeclaration declaration) : declaration_(std::move(declaration)) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

    const ParameterDeclaration& Declaration() const noexcept { return declaration_; }
    const Value& GetValue() const noexcept { return value_; }

    /// In the form of the type. @throws AdoError 3421 for a value that does not fit
    void SetValue(const Value& value);
    void TakeOutput(Value value) noexcept { value_ = std::move(value); }

    /// @throws AdoError 3708 when the declaration says too little to send or receive a value
    void ExpectComplete() const;

private:
    void GetValueMember(Call& call);
    void PutValueMember(Call& call);
    void GetName(Call& call);
    void PutName(Call& call);
    void GetType(Call& call);
    void PutType(Call& call);
    void GetDirection(Call& call);
    void PutDirection(Call& call);
    void GetPrecision(Call& call);
    void PutPrecision(Call& call);
    void GetNumericScale(Call& call);
    void PutNumericScale(Call& call);
    void GetSize(Call& call);
    void PutSize(Call& call);
    void AppendChunk(Call& call);
    void GetAttributes(Call& call);
    void PutAttributes(Call& call);

    ParameterDeclaration declaration_;
    Value value_;
    bool hasChunks_ = false;
};

/// The column that a declared value would be stored in: it decides how the value travels.
/// @throws AdoError 3708 for a type that no parameter can have
Column ColumnOf(const ParameterDeclaration& declaration);

/// @throws AdoError 3001 for a number that is none of the enumeration's
void ExpectDirection(LONG direction);

}  // namespace tk::ado
