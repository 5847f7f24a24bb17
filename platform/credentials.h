// platform/credentials.h - the account that calls to another machine run under.
#pragma once

#include <windows.h>

#include <objbase.h>

#include "platform/wide_text.h"

namespace tk::platform {

/// The record that the platform takes, and the texts behind it.
class Credentials {
public:
    /// A null or empty text leaves its place in the record empty.
    Credentials(const char* user, const char* domain, const char* password)
        : user_(user), domain_(domain), password_(password) {
        Fill(user_, identity_.User, identity_.UserLength);
        Fill(domain_, identity_.Domain, identity_.DomainLength);
        Fill(password_, identity_.Password, identity_.PasswordLength);
        identity_.Flags = SEC_WINNT_AUTH_IDENTITY_UNICODE;
    }
    Credentials(const Credentials&) = delete;
    Credentials& operator=(const Credentials&) = delete;

    bool NamesUser() const { return identity_.UserLength != 0; }
    COAUTHIDENTITY& Identity() { return identity_; }

private:
    // The length counts characters, the terminator left out.
    template <class Length>
    static void Fill(const WideText& text, USHORT*& place, Length& length) {
        const UINT characters = SysStringLen(text.Get());
        if (characters == 0) return;
        place = reinterpret_cast<USHORT*>(text.Get());
        length = characters;
    }

    WideText user_;
    WideText domain_;
    WideText password_;
    COAUTHIDENTITY identity_ = {};
};

/// Makes calls through a proxy run under an account. @return E_NOINTERFACE for an object that is no proxy
inline HRESULT SetBlanket(IUnknown* proxy, COAUTHIDENTITY& identity) {
    return CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                             RPC_C_IMP_LEVEL_IMPERSONATE, &identity, EOAC_NONE);
}

}  // namespace tk::platform
