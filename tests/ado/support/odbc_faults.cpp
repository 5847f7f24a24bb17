#include "ado/support/odbc_faults.h"

#include <atomic>
#include <cstring>
#include <type_traits>

namespace tk::test {
namespace {

std::atomic<long> callNumber = 0;
std::atomic<long> failing = 0;
std::atomic<bool> hasFailed = false;
std::atomic<bool> recordWaits = false;  // the next question for diagnostics gets the injected record
std::atomic<long> openHandles = 0;

const ado::OdbcApi kReal;

bool ShallFail() {
    const long number = ++callNumber;
    if (failing == 0 || number != failing) return false;
    hasFailed = true;
    recordWaits = true;
    return true;
}

/// A stand-in for one function, of exactly its type.
template <auto Member>
struct Stand;

template <class Result, class... Arguments, Result (*ado::OdbcApi::*Member)(Arguments...)>
struct Stand<Member> {
    static Result Call(Arguments... arguments) {
        if (ShallFail()) return SQL_ERROR;
        recordWaits = false;
        return (kReal.*Member)(arguments...);
    }
};

SQLRETURN AllocHandle(SQLSMALLINT kind, SQLHANDLE parent, SQLHANDLE* handle) {
    if (ShallFail()) return SQL_ERROR;
    const SQLRETURN result = kReal.AllocHandle(kind, parent, handle);
    if (SQL_SUCCEEDED(result) && kind != SQL_HANDLE_ENV) ++openHandles;
    return result;
}

SQLRETURN FreeHandle(SQLSMALLINT kind, SQLHANDLE handle) {
    if (kind != SQL_HANDLE_ENV) --openHandles;
    return kReal.FreeHandle(kind, handle);
}

SQLRETURN GetDiagRec(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT number, SQLCHAR* state, SQLINTEGER* native,
                     SQLCHAR* text, SQLSMALLINT size, SQLSMALLINT* length) {
    if (!recordWaits) return kReal.GetDiagRec(kind, handle, number, state, native, text, size, length);
    if (number > 1) return SQL_NO_DATA;
    constexpr char kText[] = "[test][driver]the call failed";
    std::memcpy(state, "HY000", 6);
    *native = 4711;
    std::memcpy(text, kText, sizeof kText);
    *length = sizeof kText - 1;
    return SQL_SUCCESS;
}

ado::OdbcApi MakeTable() {
    ado::OdbcApi table;
#define TK_STAND(name, function) table.name = &Stand<&ado::OdbcApi::name>::Call;
    TK_ODBC_FUNCTIONS(TK_STAND)
#undef TK_STAND
    table.AllocHandle = &AllocHandle;
    table.FreeHandle = &FreeHandle;
    table.GetDiagRec = &GetDiagRec;
    table.Disconnect = kReal.Disconnect;
    table.FreeStmt = kReal.FreeStmt;
    return table;
}

const ado::OdbcApi& Table() {
    static const ado::OdbcApi table = MakeTable();
    return table;
}

}  // namespace

OdbcFaults::OdbcFaults() : former_(ado::SetOdbcForTest(Table())) {
    openHandles = 0;
    FailCall(0);
}

OdbcFaults::~OdbcFaults() {
    FailCall(0);
    ado::SetOdbcForTest(former_);
}

void OdbcFaults::FailCall(long number) {
    failing = number;
    callNumber = 0;
    hasFailed = false;
    recordWaits = false;
}

bool OdbcFaults::HasFailed() const {
    return hasFailed;
}

long OdbcFaults::OpenHandles() const {
    return openHandles;
}

long OdbcFaults::Calls() const {
    return callNumber;
}

}  // namespace tk::test
