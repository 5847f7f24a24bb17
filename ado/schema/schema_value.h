// ado/schema/schema_value.h - one value of a catalog's answer or of a schema rowset. Texts are somebody else's.
#pragma once

#include <optional>
#include <string_view>

namespace tk::ado {

class SchemaValue {
public:
    enum class Form : unsigned char { Null, Number, Flag, Text };

    constexpr SchemaValue() noexcept = default;  // NULL
    static constexpr SchemaValue Number(long long number) noexcept { return {Form::Number, number, {}}; }
    static constexpr SchemaValue Flag(bool truth) noexcept { return {Form::Flag, truth ? -1 : 0, {}}; }

    /// @param text  UTF-8; borrowed: from the answer that it stands in, or a literal
    static constexpr SchemaValue Text(std::string_view text) noexcept { return {Form::Text, 0, text}; }

    static constexpr SchemaValue Of(const std::optional<long long>& number) noexcept {
        return number ? Number(*number) : SchemaValue();
    }
    static constexpr SchemaValue Of(const std::optional<std::string_view>& text) noexcept {
        return text ? Text(*text) : SchemaValue();
    }

    constexpr Form Kind() const noexcept { return form_; }
    constexpr bool IsNull() const noexcept { return form_ == Form::Null; }
    constexpr bool IsText() const noexcept { return form_ == Form::Text; }
    constexpr long long AsNumber() const noexcept { return number_; }  // of a flag -1 or 0
    constexpr std::string_view AsText() const noexcept { return text_; }

private:
    constexpr SchemaValue(Form form, long long number, std::string_view text) noexcept
        : form_(form), number_(number), text_(text) {}

    Form form_ = Form::Null;
    long long number_ = 0;
    std::string_view text_;
};

}  // namespace tk::ado
