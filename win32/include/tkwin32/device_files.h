// tkwin32/device_files.h - devices and files that are there, opened by name.
//
//   HANDLE port = CreateFileA("COM3", 0, 0, NULL, OPEN_EXISTING, 0, NULL);
//   if (port != INVALID_HANDLE_VALUE) CloseHandle(port);
//
// COM1 to COM256 ("\\.\COM1" as well) are serial ports: /dev/ttyS0 and so on, or the device that the port map names.
// The map is the file that TKKERNEL_PORTS names, else $XDG_CONFIG_HOME/tkkernel/ports.conf (else ~/.config/...), else
// /etc/tkkernel/ports.conf; the first of them that is there counts. One port a line, UTF-8, '#' opens a comment:
//
//   COM3 /dev/ttyUSB0
//   COM4 -                 # no port, whatever the machine has
//
// Any other name is a path. Programs that run with more rights than their user do not look at the environment.
// Threads: any.
#pragma once

#include "windef.h"

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x1u
#define FILE_SHARE_WRITE 0x2u
#define OPEN_EXISTING 3u

/// Opens what is there. Without access rights a device is looked at and left alone: no line of a port changes its
/// state, and a port whose chip is missing is not there. With them it is opened for reading and writing as asked; a
/// port not to be shared is taken for this process alone.
/// @param dwCreationDisposition  OPEN_EXISTING; another one is ERROR_NOT_SUPPORTED
/// @param dwShareMode  counts for ports; dwFlagsAndAttributes, lpSecurityAttributes, hTemplateFile  not used
/// @return closed with CloseHandle; INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ...
WINBASEAPI HANDLE WINAPI CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                                     LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                                     DWORD dwFlagsAndAttributes, HANDLE hTemplateFile);
#define CreateFile CreateFileA
