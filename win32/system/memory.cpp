#include <malloc.h>

#include <cstdlib>

#include "objbase.h"
#include "winbase.h"

namespace {

void* Allocate(UINT flags, SIZE_T size) {
    // A block of no bytes still has an address of its own.
    void* block =
        (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, size != 0 ? size : 1) : std::malloc(size != 0 ? size : 1);
    if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

SIZE_T SizeOf(void* block) {
    return block != nullptr ? malloc_usable_size(block) : 0;
}

void* Resize(void* block, SIZE_T size, UINT flags) {
    if (block == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const SIZE_T before = SizeOf(block);
    auto* resized = static_cast<unsigned char*>(std::realloc(block, size != 0 ? size : 1));
    if (resized == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if ((flags & LMEM_ZEROINIT) != 0 && size > before) std::memset(resized + before, 0, size - before);
    return resized;
}

}  // namespace

HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) {
    return Allocate(uFlags, uBytes);
}
HLOCAL LocalReAlloc(HLOCAL hMem, SIZE_T uBytes, UINT uFlags) {
    return Resize(hMem, uBytes, uFlags);
}
HLOCAL LocalFree(HLOCAL hMem) {
    std::free(hMem);
    return nullptr;
}
LPVOID LocalLock(HLOCAL hMem) {
    return hMem;
}
BOOL LocalUnlock(HLOCAL) {
    SetLastError(NO_ERROR);  // "not locked any more" is 0 with no error
    return FALSE;
}
SIZE_T LocalSize(HLOCAL hMem) {
    return SizeOf(hMem);
}

HGLOBAL GlobalAlloc(UINT uFlags, SIZE_T dwBytes) {
    return Allocate(uFlags, dwBytes);
}
HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags) {
    return Resize(hMem, dwBytes, uFlags);
}
HGLOBAL GlobalFree(HGLOBAL hMem) {
    return LocalFree(hMem);
}
LPVOID GlobalLock(HGLOBAL hMem) {
    return hMem;
}
BOOL GlobalUnlock(HGLOBAL hMem) {
    return LocalUnlock(hMem);
}
SIZE_T GlobalSize(HGLOBAL hMem) {
    return SizeOf(hMem);
}

LPVOID CoTaskMemAlloc(SIZE_T cb) {
    return std::malloc(cb != 0 ? cb : 1);
}

LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) {
    if (pv != nullptr && cb == 0) {
        std::free(pv);
        return nullptr;
    }
    return std::realloc(pv, cb != 0 ? cb : 1);
}

void CoTaskMemFree(LPVOID pv) {
    std::free(pv);
}
