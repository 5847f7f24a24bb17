// tests/util/lists.h - framework lists and maps beside the standard ones.
#pragma once

#include <afx.h>
#include <afxcoll.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "util/values.h"

namespace tk::test {

using Texts = std::vector<std::string>;

inline Texts ToTexts(const CStringArray& array) {
    Texts texts;
    for (int i = 0; i < array.GetSize(); ++i)
        texts.push_back(Std(array[i]));
    return texts;
}

inline void Assign(CStringArray& array, const Texts& texts) {
    array.RemoveAll();
    for (const auto& text : texts)
        array.Add(CString(text.data(), static_cast<int>(text.size())));
}

}  // namespace tk::test
