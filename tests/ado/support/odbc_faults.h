// tests/ado/support/odbc_faults.h - lets the n-th ODBC call fail, and counts what is allocated and freed.
//
//   OdbcFaults faults;
//   faults.FailCall(7);
//   ... calls ...
//   EXPECT_EQ(faults.OpenHandles(), 0);
//
// A failing call does nothing and leaves one record "HY000 4711 [test][driver]the call failed". Calls that give back
// (FreeHandle, Disconnect, FreeStmt) and the diagnostics themselves never fail.
#pragma once

#include "ado/odbc/odbc_api.h"

namespace tk::test {

class OdbcFaults {
public:
    OdbcFaults();
    ~OdbcFaults();
    OdbcFaults(const OdbcFaults&) = delete;
    OdbcFaults& operator=(const OdbcFaults&) = delete;

    /// Counts from 1, from now on; 0 lets every call pass.
    void FailCall(long number);

    /// True when the call to fail has been made.
    bool HasFailed() const;

    /// Connections and statements allocated and not freed since construction.
    long OpenHandles() const;

    /// Calls made since the last FailCall.
    long Calls() const;

private:
    const ado::OdbcApi& former_;
};

}  // namespace tk::test
