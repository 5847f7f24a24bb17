// Questions that the property map answers.
#include "driver/invoke.h"
#include "tkkernel/driver.h"
#include "tkkernel/platform.h"

namespace {

constexpr long kStateOpen = 1;
constexpr int kTagLength = 3;

}  // namespace

CString CTDatabase::GetPropertyValue(const char* szName) {
    CString value;
    if (GetState() == kStateOpen && szName != nullptr) properties_.Lookup(szName, value);
    return value;
}

CString CTDatabase::GetCurSchema() {
    return GetPropertyValue("User Name");
}

CString CTDatabase::GetUser() {
    return GetPropertyValue("User ID");
}

CString CTDatabase::GetPassword() {
    return GetPropertyValue("Password");
}

CString CTDatabase::GetServer() {
    return GetPropertyValue("Data Source Name");
}

CString CTDatabase::GetDriverName() {
    return GetPropertyValue("Provider Friendly Name");
}

CString CTDatabase::GetDatabaseName() {
    return GetCurDbName();
}

CString CTDatabase::GetCurDbName() {
    CString name = GetPropertyValue("Current Catalog");
    // By character: the second byte of a double-byte character may equal a backslash.
    const int backslash = name.ReverseFind('\\');
    if (backslash >= 0) name = name.Mid(backslash + 1);
    if (name.IsEmpty()) name = GetPropertyValue("Server Name");
    if (name.IsEmpty()) name = GetPropertyValue("Data Source Name");
    if (name.IsEmpty()) name = "(Unknown)";
    return name;
}

CString CTDatabase::GetClient() {
    return GetComputerNameA();
}

CString CTDatabase::GetConnectionType() {
    return GetPropertyValue("Extended Properties").Left(3).CompareNoCase("DSN") == 0 ? "ODBC" : "ADO";
}

CString CTDatabase::GetDbmsName() {
    return GetPropertyValue("DBMS Name");
}

CString CTDatabase::GetDBMS() {
    return GetDbmsName().Left(kTagLength);
}
