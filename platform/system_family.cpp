#include <windows.h>

#include "tkkernel/platform.h"

int IsNT() {
    return GetVersion() < 0x80000000u ? 1 : 0;
}

int SetSecurity(SECURITY_ATTRIBUTES* pAttributes) {
    if (pAttributes == nullptr) return 0;
    *pAttributes = {};
    // Its size is the record's on the machine at hand: 20 bytes where pointers have four.
    void* descriptor = LocalAlloc(LPTR, sizeof(SECURITY_DESCRIPTOR));
    if (descriptor == nullptr) return 0;
    if (!InitializeSecurityDescriptor(descriptor, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(descriptor, TRUE, nullptr, FALSE)) {
        LocalFree(descriptor);
        return 0;
    }
    *pAttributes = {sizeof(SECURITY_ATTRIBUTES), descriptor, TRUE};
    return 1;
}
