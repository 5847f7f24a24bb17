// listed_names.h - what a member that lists names has put into its array.
#pragma once

#include <afxcoll.h>

#include <string>
#include <vector>

namespace tk::test {

/// @param list  calls the member with an empty array; gives what it returned
/// @return the names; "failed" when it returned 0
template <typename List>
std::vector<std::string> Names(List&& list) {
    CStringArray names;
    if (!list(names)) return {"failed"};
    std::vector<std::string> texts;
    for (int i = 0; i < names.GetSize(); ++i)
        texts.emplace_back(names.GetAt(i));
    return texts;
}

}  // namespace tk::test
