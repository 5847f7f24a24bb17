#include <algorithm>

#include "tkkernel/util.h"
#include "util/text.h"

int StringInArray(const CStringArray& array, const char* szText) {
    return StringInArrayPos(array, szText) >= 0 ? 1 : 0;
}

int StringInArrayPos(const CStringArray& array, const char* szText) {
    for (int i = 0; i < array.GetSize(); ++i) {
        if (array[i] == tk::util::OrEmpty(szText)) return i;
    }
    return -1;
}

int DWordInArray(const CDWordArray& array, DWORD nValue) {
    const DWORD* values = array.GetData();
    return std::find(values, values + array.GetSize(), nValue) != values + array.GetSize() ? 1 : 0;
}

void SortArray(CStringArray& array) {
    CString* elements = array.GetData();
    std::stable_sort(elements, elements + array.GetSize());
}
