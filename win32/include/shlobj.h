// shlobj.h - shortcuts, and picking a folder.
//
//   IShellLinkA* link = nullptr;
//   CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, (void**)&link);
//   link->SetPath("/opt/stock/bin/stock");
//
// A shortcut is saved in the shell's own binary format, for whoever reads it there, or as a desktop entry when the name
// of the file ends in ".desktop".
// Text: GBK; paths as they are given. Threads: any; one object is used by one at a time.
#pragma once

#include "objbase.h"
#include "winuser.h"

inline constexpr CLSID CLSID_ShellLink = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IShellLinkA = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersist = {0x0000010C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersistFile = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct SHITEMID {
    USHORT cb;
    BYTE abID[1];
};
/// A place in the shell's name space: here, one item that holds a path. Freed with CoTaskMemFree.
struct ITEMIDLIST {
    SHITEMID mkid;
};
using LPITEMIDLIST = ITEMIDLIST*;
using LPCITEMIDLIST = const ITEMIDLIST*;

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    CHAR cFileName[MAX_PATH];
    CHAR cAlternateFileName[14];
};

struct IPersist : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) = 0;

protected:
    ~IPersist() = default;
};

struct IPersistFile : IPersist {
    /// @return S_OK when there is something to save, else S_FALSE
    virtual HRESULT STDMETHODCALLTYPE IsDirty() = 0;
    /// @return the failure form of the system's error; E_FAIL for a file that is no shortcut, E_NOTIMPL for a desktop
    ///         entry
    virtual HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pszFileName, DWORD dwMode) = 0;
    /// Whole or not at all.
    /// @param pszFileName  null: the file it was loaded from or saved to
    /// @param fRemember  the object belongs to that file from now on
    virtual HRESULT STDMETHODCALLTYPE Save(LPCOLESTR pszFileName, BOOL fRemember) = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveCompleted(LPCOLESTR pszFileName) = 0;
    /// @return S_FALSE and null when it belongs to no file; freed with CoTaskMemFree
    virtual HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* ppszFileName) = 0;

protected:
    ~IPersistFile() = default;
};

struct IShellLinkA : IUnknown {
    /// @param pfd  accepted and emptied; may be null
    /// @return S_FALSE when there is no path
    virtual HRESULT STDMETHODCALLTYPE GetPath(LPSTR pszFile, int cch, WIN32_FIND_DATAA* pfd, DWORD fFlags) = 0;
    /// @return E_NOTIMPL, both: a path is all a target can be here
    virtual HRESULT STDMETHODCALLTYPE GetIDList(LPITEMIDLIST* ppidl) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetIDList(LPCITEMIDLIST pidl) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(LPSTR pszName, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPCSTR pszName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWorkingDirectory(LPSTR pszDir, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetWorkingDirectory(LPCSTR pszDir) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArguments(LPSTR pszArgs, int cch) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetArguments(LPCSTR pszArgs) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHotkey(WORD* pwHotkey) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHotkey(WORD wHotkey) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetShowCmd(int* piShowCmd) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetShowCmd(int iShowCmd) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIconLocation(LPSTR pszIconPath, int cch, int* piIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetIconLocation(LPCSTR pszIconPath, int iIcon) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetRelativePath(LPCSTR pszPathRel, DWORD dwReserved) = 0;
    /// @return S_OK; the target is not looked for
    virtual HRESULT STDMETHODCALLTYPE Resolve(HWND hwnd, DWORD fFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPath(LPCSTR pszFile) = 0;

protected:
    ~IShellLinkA() = default;
};

using BFFCALLBACK = int(CALLBACK*)(HWND hwnd, UINT uMsg, LPARAM lParam, LPARAM lpData);

struct BROWSEINFOA {
    HWND hwndOwner;
    LPCITEMIDLIST pidlRoot;
    LPSTR pszDisplayName;  // room for MAX_PATH characters, or null
    LPCSTR lpszTitle;
    UINT ulFlags;
    BFFCALLBACK lpfn;
    LPARAM lParam;
    int iImage;
};

#define BIF_RETURNONLYFSDIRS 0x1u

/// Asks for a folder: in a window where a display and zenity are there, on the terminal where there is one.
/// @param lpbi  the title and the room for the folder's name count
/// @return the caller's; null when cancelled, when what was typed is no folder, or when nobody can be asked
WINUSERAPI LPITEMIDLIST WINAPI SHBrowseForFolderA(BROWSEINFOA* lpbi);
/// @param pszPath  room for MAX_PATH characters
/// @return FALSE for what is no path, or one that does not fit
WINUSERAPI BOOL WINAPI SHGetPathFromIDListA(LPCITEMIDLIST pidl, LPSTR pszPath);

#define SHBrowseForFolder SHBrowseForFolderA
#define SHGetPathFromIDList SHGetPathFromIDListA
