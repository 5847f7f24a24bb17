// Opens an embedded database through the installed library; exits 0 when the row comes back.
#include <tkkernel/tkkernel.h>

#include <cstdio>

int main() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int value = 0;
    {
        CTDatabase database;
        if (!database.Open("Driver=SQLite3;Database=:memory:")) {
            std::printf("%s\n", (LPCTSTR)database.GetLastErrorString());
            return 1;
        }
        CTRecordset records(&database);
        if (!records.OpenSQL("SELECT 42 AS answer", 1)) {
            std::printf("%s\n", (LPCTSTR)records.GetLastErrorString());
            return 1;
        }
        value = records.GetIntValue("answer");
    }
    CoUninitialize();
    std::printf("answer %d\n", value);
    return value == 42 ? 0 : 1;
}
