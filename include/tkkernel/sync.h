// tkkernel/sync.h - named events and semaphores that processes share, and timers due at a local date and time.
//
//   CTEvent ready;
//   if (!ready.OpenEventA("Stock.Ready")) return Report(ready.GetLastErrorString());
//   ready.SetEvent();                        // here
//   if (ready.WaitForEvent(5000)) Refresh();  // in another process that opened the same name
//
//   HANDLE timer = SetWaitForTimer(when, 0, 0);  // a SYSTEMTIME in local time
//   WaitForSingleObject(timer, INFINITE);
//
// Names: GBK, case-sensitive, at most 260 characters, one space for all kinds of objects; a null or empty name is an
// object of this caller alone. Every object has default security.
// Copies of an object share its handle as it is: closing one closes it for all.
// Failures: results, never exceptions; where a comment says so the reason is in GetLastErrorString(), elsewhere in the
// calling thread's last error code.
// Threads: the kernel objects are for any number of threads and processes; one CTEvent or CTSemaphore is used by one
// thread at a time.
#pragma once

#include <windows.h>

#include <afx.h>

#include "tkkernel/export.h"

/// A named event that lets one waiter through each time it is set.
class TKKERNEL_API CTEvent {
public:
    CTEvent();
    CTEvent(const CTEvent& other);
    CTEvent& operator=(const CTEvent& other);
    /// Closes the handle.
    virtual ~CTEvent();

    /// Opens the event of that name, made not signalled when it does not exist yet. A handle from before is not closed.
    /// @return TRUE; FALSE with the reason in GetLastErrorString()
    /// @note For a name that exists a second handle is opened and kept; the first one stays open until the process
    /// ends.
    int OpenEventA(const char* szName);

    /// @return TRUE; FALSE with the reason in GetLastErrorString()
    int SetEvent();
    /// @return TRUE; FALSE with the reason in GetLastErrorString()
    int ResetEvent();
    /// @param nTimeout  milliseconds; INFINITE waits without end
    /// @return FALSE when the time ran out; TRUE for everything else, a wait that failed included
    int WaitForEvent(unsigned long nTimeout);
    /// Closes the handle, which keeps its value: a second call fails.
    int CloseEvent();

    CString GetEventName();
    CString GetLastErrorString();

private:
    CString lastError_;
    CString name_;
    HANDLE handle_ = NULL;
};

/// A named semaphore used as a gate: closed until somebody sets it, open to everybody from then on.
class TKKERNEL_API CTSemaphore {
public:
    CTSemaphore();
    CTSemaphore(const CTSemaphore& other);
    CTSemaphore& operator=(const CTSemaphore& other);
    /// Leaves the handle open: the gate stays as it is while the process lives.
    virtual ~CTSemaphore();

    /// Opens the semaphore of that name, made with count 0 when it does not exist yet. A handle from before is not
    /// closed.
    /// @return TRUE; FALSE with the reason in GetLastErrorString()
    /// @note With a last error code of 2 left over on the thread an existing semaphore is opened twice, to the same
    /// end.
    int OpenSemaphoreA(const char* szName);

    /// Passes the gate; what it takes from the count it puts back.
    /// @param nTimeout  milliseconds; INFINITE waits without end
    /// @return TRUE; FALSE when the time ran out, or when the count could not be put back
    int WaitSemaphore(unsigned long nTimeout);
    /// Adds one to the count, which opens the gate. @return FALSE when that failed
    int SetSemaphore();
    /// Closes the handle, which keeps its value: a second call fails.
    int CloseSemaphore();

    /// The name of the semaphore.
    CString GetEventName();
    CString GetLastErrorString();

private:
    CString lastError_;
    CString name_;
    HANDLE handle_ = NULL;
};

/// Makes an unnamed manual-reset timer and sets it.
/// @param when     local date and time; the day of the week does not count. A moment that has passed signals at once.
/// @param nPeriod  milliseconds between later signals, 0 for none
/// @param bResume  nonzero: wakes the machine from suspend, where that can be done
/// @return the caller's, closed with CloseHandle; NULL for no date, a period below 0 or beyond 32 bits, no memory
TKKERNEL_API HANDLE SetWaitForTimer(SYSTEMTIME& when, long nPeriod, int bResume);

/// Stops a timer; its handle stays open and keeps its value.
/// @return FALSE when it is no timer
TKKERNEL_API int KillWaitForTimer(HANDLE& hTimer);
