#include "tkkernel/util.h"
#include "util/text.h"

void StringToMap(CMapStringToString& map, const char* szText) {
    using namespace tk::util;
    CStringArray items;
    StringToArray(items, szText, ";");
    for (int i = 0; i < items.GetSize(); ++i) {
        const std::string_view item = View(items[i]);
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos) continue;
        map[ToText(item.substr(0, equals))] = ToText(item.substr(equals + 1));
    }
}

CString MapToString(const CMapStringToString& map) {
    CString result;
    CString key;
    CString value;
    for (POSITION position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, key, value);
        if (!result.IsEmpty()) result += ';';
        result += key;
        result += '=';
        result += value;
    }
    return result;
}
