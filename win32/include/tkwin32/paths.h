// tkwin32/paths.h - paths taken apart and put together, by POSIX rules under the usual names.
//
//   _splitpath("/opt/stock/bin/stock.exe", drive, folder, name, extension);   "" "/opt/stock/bin/" "stock" ".exe"
//
// There is no drive: it is empty when split off and written first when given. '/' separates, a backslash is part of a
// name. The extension starts at the last point of the last part.
#pragma once

#include "windef.h"

#define _MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256

/// Any target may be null. Each is cut, behind a whole character, at the _MAX_ size that belongs to it.
EXTERN_C TKWIN32_API void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext);
/// Adds the '/' behind dir and the point before ext where they are missing; cut at _MAX_PATH.
EXTERN_C TKWIN32_API void _makepath(char* path, const char* drive, const char* dir, const char* fname, const char* ext);
/// As _splitpath, with the size of each target.
/// @return 0; EINVAL for a null path or a null target with a size; ERANGE, all targets empty, when one is too small
EXTERN_C TKWIN32_API int _splitpath_s(const char* path, char* drive, SIZE_T driveSize, char* dir, SIZE_T dirSize,
                                      char* fname, SIZE_T fnameSize, char* ext, SIZE_T extSize);
