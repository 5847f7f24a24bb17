// lmaccess.h - the accounts of this machine.
//
//   NET_DISPLAY_USER* users = NULL;
//   DWORD count = 0;
//   NetQueryDisplayInformation(NULL, 1, 0, 100, MAX_PREFERRED_LENGTH, &count, (void**)&users);
//   NetApiBufferFree(users);
//
// Accounts are those of people: the superuser, and the numbers that the system gives to people (UID_MIN to UID_MAX of
// /etc/login.defs, else 1000 to 60000). They come in the order of their names.
// Threads: any.
#pragma once

#include "windef.h"
#include "winerror.h"

using NET_API_STATUS = DWORD;

#define NERR_Success 0u
#define NERR_InvalidComputer 2351u
#define MAX_PREFERRED_LENGTH 0xFFFFFFFFu
#define UF_SCRIPT 0x0001u
#define UF_NORMAL_ACCOUNT 0x0200u

struct NET_DISPLAY_USER {
    LPWSTR usri1_name;
    LPWSTR usri1_comment;  // empty
    DWORD usri1_flags;
    LPWSTR usri1_full_name;
    DWORD usri1_user_id;
    DWORD usri1_next_index;  // where the next request goes on
};
using PNET_DISPLAY_USER = NET_DISPLAY_USER*;

/// One page of accounts.
/// @param ServerName  null or this machine; another one is NERR_InvalidComputer
/// @param Level  1, users; another one is ERROR_INVALID_LEVEL
/// @param Index  0, or usri1_next_index of the last entry before
/// @param PreferredMaximumLength  bytes; one entry is given always
/// @param SortedBuffer  receives one block, freed with NetApiBufferFree; null where there is no entry
/// @return NERR_Success with the last page, ERROR_MORE_DATA with another
WINADVAPI NET_API_STATUS WINAPI NetQueryDisplayInformation(LPCWSTR ServerName, DWORD Level, DWORD Index,
                                                           DWORD EntriesRequested, DWORD PreferredMaximumLength,
                                                           LPDWORD ReturnedEntryCount, PVOID* SortedBuffer);
WINADVAPI NET_API_STATUS WINAPI NetApiBufferFree(LPVOID Buffer);
