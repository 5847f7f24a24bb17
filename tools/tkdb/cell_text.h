// tools/tkdb/cell_text.h - one field value as UTF-8 text for people and for other programs.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

namespace tk::tools {

/// What a value is to a reader of the output.
enum class CellNature { Null, Number, Boolean, Text };

struct CellText {
    CellNature nature = CellNature::Null;
    std::string utf8;
};

/// Texts keep every character, also those outside GBK; binary values become hexadecimal digits.
void SetCellText(const VARIANT& value, CellText& cell);

}  // namespace tk::tools
