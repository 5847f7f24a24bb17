// tkkernel/session.h - a bounded pool of open database sessions, lent to the many callers of one process.
//
//   CTDataServer server;
//   if (!server.OpenDatabase("stock", "sa", "secret", 8)) return Report(server.GetLastErrorString());
//
//   CTDataClient client;                                    // one for each thread
//   client.Invoke(&server);
//   if (!client.OpenSQL("select * from ORDERS", 50, 1)) return Report(client.GetLastErrorString());
//   for (; !client.GetRecordEof(); client.MoveNext()) Show(client.GetValueString(key));
//   client.CloseSQL();                                      // the session goes back to the pool
//
// A session is a connection and a recordset bound to it; they are lent one by one. When all are lent, the server takes
// back a lease that is 180,000 ms old or older, the first it finds: not necessarily the oldest.
//
// Failure: a member returns the value that stands for it and leaves the reason in GetLastErrorString(). Whatever goes
// wrong inside a lent session (an exception, or a fault such as an access violation) ends in the member that used it:
// it becomes the message of that member, a record in the event log, and the member's value for failure; a
// client gives the session back. Faults of other threads and outside of these members are the program's own.
// Ownership: what is lent stays the server's. A server outlives its clients; clients outlive their leases.
// Threads: lend and return from any thread; OpenDatabase and CloseDatabase run alone. A client belongs to one thread,
// while the server may end its leases from another.
// Locks: the server's lock is the only one that others are entered inside; the client's EndTrans and CloseSQL are
// called with it held when a lease is taken over.
// Text: GBK; a null text counts as an empty one.
#pragma once

#include <windows.h>

#include <afxmt.h>

#include "tkkernel/driver.h"
#include "tkkernel/export.h"
#include "tkkernel/session_parts.h"

class CTDataClient;

namespace tk::session {
struct Inside;
}

class TKKERNEL_API CTDataServer {
public:
    CTDataServer();
    CTDataServer(const CTDataServer&) = delete;
    CTDataServer& operator=(const CTDataServer&) = delete;
    virtual ~CTDataServer();  ///< CloseDatabase.

    /// Opens the pool: each session as CTDatabase::Open(connection, user, password) does, which makes of the first text
    /// the value of DSN. For a connection string without a data source name begin it with ';'.
    /// @param szConnection, szUser, szPassword  each kept up to 127 bytes, cut behind a whole character
    /// @param nCount  sessions wanted; fewer than 4 opens 4
    /// @return 1, or 0 with what the session that failed has to say, which is logged as well
    /// @note After a failed open GetSectionCount() is what was wanted, lending reports "fully occupied" rather than
    ///       "not open", and the pool may be opened again. An open pool that is opened again keeps its former sessions
    ///       until CloseDatabase: those that are free are out of use, those that are lent are lent on once they come
    ///       back.
    int OpenDatabase(const char* szConnection, const char* szUser, const char* szPassword, short nCount);

    /// Closes every session, lent ones as well: what clients hold is gone, and they say so when they are used next.
    /// @return 1; 0 when the end of a session was a fault, which is reported once: all of them are closed all the same
    int CloseDatabase();

    /// Lends a connection; when none is free, one that somebody has held for 180,000 ms or more. That client's EndTrans
    /// is called; see the note.
    /// @param pOwner  the borrowing CTDataClient; whatever else it points to is recorded, at most read
    /// @return borrowed, to be given back with RevokeDatabase; null with the reason, which is logged as a warning when
    ///         all are lent
    /// @note A session that was taken back from a client is on the free list as well as lent: the next caller may get
    ///       it, too.
    CTDatabase* InvokeDatabase(void* pOwner);
    CTRecordset* InvokeRecordset(void* pOwner);  ///< The same for a recordset; the client's CloseSQL is called.

    /// Takes a connection back, to be lent after those that are free by now.
    /// @return 1, also for what is not lent, which is left alone; 0 when the pool is not open
    int RevokeDatabase(CTDatabase* pDatabase);
    int RevokeRecordset(CTRecordset* pRecordset);  ///< The same for a recordset; closing it is the borrower's.

    /// The connection that would be lent next, or the first one when all are lent; null when the pool is not open.
    /// @note Not lent: somebody else may be using it.
    CTDatabase* GetDatabase();

    // Three questions to GetDatabase(): the same-named members of CTDatabase.
    // Each gives the answer, or the reason why it is empty; "" when the pool is not open, or after a fault.

    CString GetDbmsName();
    CString GetSpecialValue(const char* szSQL, const char* szFields);
    CString GetRecordValues(const char* szSQL, const char* szSeparator);

    /// How many sessions there are, and how many connections and recordsets are free. @return 1
    int GetConfiguration(short& nSessions, short& nFreeDatabases, short& nFreeRecordsets);

    short GetSectionCount();       ///< Sessions of the pool; 0 while it is not open.
    CString GetLastErrorString();  ///< Why the last failing member failed, whichever thread it was on.

protected:
    // These enter the server's lock themselves.

    /// Gives the first connection whose lease is old enough to the new owner. @return null when there is none
    CTDatabase* ForceDatabase(void* pNewOwner);
    CTRecordset* ForceRecordset(void* pNewOwner);  ///< The same for a recordset.

    /// Records that the owner holds the object from now on. @param nKind  0 a connection, else a recordset. @return 1
    int RegisterRole(CTDataDriver* pObject, void* pOwner, unsigned long nKind);

    int IsEnabled();  ///< 1 while there are sessions; else 0 with the reason.

private:
    friend struct tk::session::Inside;
    friend class CTDataClient;

    // The order is part of the interface.
    CCriticalSection lock_;
    tk::session::FreeList freeDatabases_;
    tk::session::FreeList freeRecordsets_;
    CString lastError_;
    char connection_[128] = {};
    char user_[128] = {};
    char password_[128] = {};
    std::atomic<short> count_ = 0;
    tk::session::SessionArray<CTDatabase> databases_;
    tk::session::SessionArray<CTRecordset> recordsets_;
    tk::session::LeaseMap databaseLeases_;
    tk::session::LeaseMap recordsetLeases_;

    struct Sessions {
        tk::session::SessionArray<CTDatabase> databases;
        tk::session::SessionArray<CTRecordset> recordsets;
    };
    std::vector<Sessions> former_;       // of a pool that was opened again
    std::atomic<unsigned> opening_ = 0;  // counts the ends of sessions, so that a client knows a loan that is over
    CCriticalSection lastErrorLock_;     // of lastError_ alone; nothing else is entered inside
    tk::session::Counters counters_;
    std::atomic<unsigned> mark_ = 0;  // tells a server from other memory
};

/// The borrower's side: one thread's hold on a server, its connection and its recordset.
///
/// BeginTrans and EndTrans borrow and return a connection; they neither begin nor end a database transaction. OpenSQL,
/// OpenTable and OpenProc borrow a recordset, CloseSQL returns it. A member that needs a loan which is not held sets
/// the text that says so.
class TKKERNEL_API CTDataClient {
public:
    CTDataClient();
    CTDataClient(const CTDataClient&) = delete;
    CTDataClient& operator=(const CTDataClient&) = delete;
    virtual ~CTDataClient();  ///< Revoke.

    // ---- loans ------------------------------------------------------------------------------------------------

    int Invoke(CTDataServer* pServer);  ///< Remembers the server; borrows nothing. @return 1
    int Revoke();                       ///< Returns what is held and forgets the server. @return 1

    /// Borrows a connection. @return 0 without a server; else 1, even when the server had none to lend
    /// @note A connection that is held already is not returned first.
    int BeginTrans();
    int EndTrans();  ///< Returns the connection. @return 0 without a server; else 1
    int CloseSQL();  ///< Closes and returns the recordset. @return 1, also when none is held

    CTRecordset* GetRecordset();                   ///< Borrowed; null when none is held.
    CString GetLastErrorString();                  ///< Why the last failing member failed.
    void SetLastErrorString(const char* szError);  ///< Replaces that text.
    CString About();                               ///< The banner of this module.

    // Return the recordset that is held, borrow one, open it and set its page size.
    // @param nOption  not 0: forward only, read only
    // @return 1, or 0 with the reason: nothing is held then

    int OpenSQL(const char* szSQL, long nPageSize, int nOption);
    int OpenTable(const char* szTable, long nPageSize, int nOption);
    int OpenProc(const char* szProcedure, long nPageSize, int nOption);

    // ---- with the connection ----------------------------------------------------------------------------------

    int ExecuteSQL(const char* szSQL);            ///< @return 1, or 0 with the reason
    long ExecSQL(const char* szSQL);              ///< @return 1 when rows were changed, whatever their number; else 0
    CString GetTableScript(const char* szTable);  ///< The CREATE TABLE statement; "" with the reason.
    CString GetViewScript(const char* szView);    ///< The text of a view; "" with the reason.

    // ---- through the server; no loan is needed ------------------------------------------------------------------

    CString GetDbmsName();
    CString GetSpecialValue(const char* szSQL, const char* szFields);
    CString GetRecordValues(const char* szSQL, const char* szSeparator);

    // ---- with the recordset -----------------------------------------------------------------------------------
    // Without one, and after a fault: 0, "", null, an empty VARIANT, or what is named.

    int SaveFile(const char* szPath);  ///< In ADO's own form. @return 1, also when it fails: then with the reason
    IDispatch* GetDispatch();          ///< Borrowed.
    int GetRecordEof();
    long GetRecordCount();
    long GetPageCount();
    long GetPageSize();
    long GetPageCode();           ///< The current page, from 1.
    int SetPageCode(long nPage);  ///< @return 1
    CString GetValueString(VARIANT key);
    long GetValueLong(VARIANT key);
    VARIANT GetValueVariant(VARIANT key);  ///< The caller clears it.
    double GetValueDouble(VARIANT key);
    void SetValueString(VARIANT key, const char* szValue);
    void SetValueLong(VARIANT key, long nValue);
    void SetValueVariant(VARIANT key, VARIANT value);
    void SetValueDouble(VARIANT key, double nValue);
    void MoveNext();
    void MoveLast();
    void MoveFirst();
    void MovePrev();
    CString GetFieldName(long nIndex);
    long GetFieldIndex(const char* szName);  ///< @return -1 when there is no such field, or no recordset
    long GetFieldCount();
    CString GetAllFieldNames(const char* szSeparator);
    int GetFieldInfor(const char* szName, _tagFIELDINFO* pInfo);  ///< @return 1, or 0 with the reason
    CString GetRecordString(const char* szSeparator);             ///< The display texts of the current record.

protected:
    int IsEnableDatabase();   ///< 1 while a connection is held; else 0 with the reason.
    int IsEnableRecordset();  ///< 1 while a recordset is held; else 0 with the reason.

private:
    friend struct tk::session::Inside;

    /// One object on loan. The server may end the loan on another thread.
    template <typename Object>
    struct Loan {
        std::atomic<Object*> object = nullptr;
        std::atomic<CTDataServer*> lender = nullptr;
        std::atomic<unsigned> opening = 0;  // the lender's, at the time
    };

    // The order is part of the interface.
    CString lastError_;
    std::atomic<CTDataServer*> server_ = nullptr;
    Loan<CTDatabase> database_;
    Loan<CTRecordset> recordset_;

    CCriticalSection lastErrorLock_;  // of lastError_ alone; nothing else is entered inside
    std::atomic<unsigned> mark_ = 0;  // tells a client from other memory
};
