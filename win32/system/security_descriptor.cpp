#include "winbase.h"

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR pSecurityDescriptor, DWORD dwRevision) {
    if (pSecurityDescriptor == nullptr || dwRevision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(pSecurityDescriptor == nullptr ? ERROR_INVALID_PARAMETER : ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    *static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor) = {
        SECURITY_DESCRIPTOR_REVISION, 0, 0, nullptr, nullptr, nullptr, nullptr};
    return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR pSecurityDescriptor, BOOL bDaclPresent, PACL pDacl,
                               BOOL bDaclDefaulted) {
    auto* descriptor = static_cast<SECURITY_DESCRIPTOR*>(pSecurityDescriptor);
    if (descriptor == nullptr || descriptor->Revision != SECURITY_DESCRIPTOR_REVISION) {
        SetLastError(descriptor == nullptr ? ERROR_INVALID_PARAMETER : ERROR_UNKNOWN_REVISION);
        return FALSE;
    }
    constexpr WORD kBoth = SE_DACL_PRESENT | SE_DACL_DEFAULTED;
    descriptor->Control = static_cast<WORD>(descriptor->Control & ~kBoth);
    descriptor->Dacl = nullptr;
    if (!bDaclPresent) return TRUE;
    descriptor->Control = static_cast<WORD>(descriptor->Control | (bDaclDefaulted ? kBoth : SE_DACL_PRESENT));
    descriptor->Dacl = pDacl;
    return TRUE;
}
