// Uses what works without a database through the package: text, lists, an exception that crosses the library's border.
#include <tkkernel/tkkernel.h>

#include <cstdio>

int main() {
    CStringArray amounts;
    StringToArray(amounts, "1234.5;0.05", ";");
    for (int i = 0; i < amounts.GetSize(); i++)
        std::printf("%s\n", (LPCTSTR)UpperCurrency(StringToDouble(amounts[i]), 1));
    try {
        amounts.SetAt(2, "");
    } catch (CInvalidArgException* e) {
        e->Delete();
        return 0;
    }
    return 1;
}
