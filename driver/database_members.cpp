// The Connection members that pass straight through.
#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

CString CTDatabase::GetConnectionString() {
    return GetText(dispatch_, connection::kConnectionString);
}

void CTDatabase::SetConnectionString(const char* szConnection) {
    PutText(dispatch_, connection::kConnectionString, szConnection);
}

long CTDatabase::GetCommandTimeout() {
    return GetLong(dispatch_, connection::kCommandTimeout);
}

void CTDatabase::SetCommandTimeout(long nSeconds) {
    PutLong(dispatch_, connection::kCommandTimeout, nSeconds);
}

void CTDatabase::SetCommandText(const char* szText) {
    PutText(dispatch_, command::kCommandText, szText);
}

long CTDatabase::GetConnectionTimeout() {
    return GetLong(dispatch_, connection::kConnectionTimeout);
}

void CTDatabase::SetConnectionTimeout(long nSeconds) {
    PutLong(dispatch_, connection::kConnectionTimeout, nSeconds);
}

CString CTDatabase::GetVersion() {
    return GetText(dispatch_, connection::kVersion);
}

IDispatch* CTDatabase::GetErrors() {
    return GetObject(dispatch_, connection::kErrors);
}

CString CTDatabase::GetDefaultDatabase() {
    return GetText(dispatch_, connection::kDefaultDatabase);
}

void CTDatabase::SetDefaultDatabase(const char* szDatabase) {
    PutText(dispatch_, connection::kDefaultDatabase, szDatabase);
}

long CTDatabase::GetIsolationLevel() {
    return GetLong(dispatch_, connection::kIsolationLevel);
}

void CTDatabase::SetIsolationLevel(long nLevel) {
    PutLong(dispatch_, connection::kIsolationLevel, nLevel);
}

long CTDatabase::GetAttributes() {
    return GetLong(dispatch_, connection::kAttributes);
}

void CTDatabase::SetAttributes(long nAttributes) {
    PutLong(dispatch_, connection::kAttributes, nAttributes);
}

long CTDatabase::GetCursorLocation() {
    return GetLong(dispatch_, connection::kCursorLocation);
}

void CTDatabase::SetCursorLocation(long nLocation) {
    PutLong(dispatch_, connection::kCursorLocation, nLocation);
}

long CTDatabase::GetMode() {
    return GetLong(dispatch_, connection::kMode);
}

void CTDatabase::SetMode(long nMode) {
    PutLong(dispatch_, connection::kMode, nMode);
}

CString CTDatabase::GetProvider() {
    return GetText(dispatch_, connection::kProvider);
}

void CTDatabase::SetProvider(const char* szProvider) {
    PutText(dispatch_, connection::kProvider, szProvider);
}

long CTDatabase::GetState() {
    return dispatch_.m_lpDispatch == nullptr ? 0 : GetLong(dispatch_, connection::kState);
}

void CTDatabase::SetRefActiveConnection(IDispatch* pConnection) {
    static constexpr BYTE parms[] = VTS_DISPATCH;
    PutRef(dispatch_, command::kActiveConnection, parms, pConnection);
}
