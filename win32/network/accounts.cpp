#include <pwd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "lmaccess.h"
#include "tkwin32/text.h"
#include "win32/system/local_machine.h"

namespace tk::network {
namespace {

struct Account {
    std::u16string name;
    std::u16string fullName;
    uid_t number;
};

/// Which numbers people have.
struct People {
    uid_t first = 1000;
    uid_t last = 60000;

    bool Has(uid_t number) const { return number == 0 || (number >= first && number <= last); }
};

People ReadPeople() {
    People people;
    std::ifstream file("/etc/login.defs");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string key;
        uid_t number = 0;
        if (!(words >> key >> number)) continue;
        if (key == "UID_MIN") people.first = number;
        if (key == "UID_MAX") people.last = number;
    }
    return people;
}

/// The accounts by name, each name once.
std::vector<Account> ReadAccounts() {
    static auto& lock = *new std::mutex;  // the system's place in its list is one for the whole process
    const People people = ReadPeople();
    std::vector<Account> accounts;
    std::vector<char> buffer(4096);
    {
        const std::lock_guard guard(lock);
        setpwent();
        passwd entry{};
        passwd* found = nullptr;
        for (;;) {
            const int error = getpwent_r(&entry, buffer.data(), buffer.size(), &found);
            if (error == ERANGE && buffer.size() < 1 << 20) {
                buffer.resize(buffer.size() * 2);
                continue;
            }
            if (error != 0 || found == nullptr) break;
            if (!people.Has(entry.pw_uid) || entry.pw_name == nullptr) continue;
            const std::string details = entry.pw_gecos != nullptr ? entry.pw_gecos : "";
            accounts.push_back({text::Utf8ToUtf16(entry.pw_name),
                                text::Utf8ToUtf16(details.substr(0, details.find(','))), entry.pw_uid});
        }
        endpwent();
    }
    std::ranges::sort(accounts, {}, &Account::name);
    const auto isSame = [](const Account& first, const Account& second) { return first.name == second.name; };
    accounts.erase(std::unique(accounts.begin(), accounts.end(), isSame), accounts.end());
    return accounts;
}

std::size_t BytesOf(const Account& account) noexcept {
    return sizeof(NET_DISPLAY_USER) + (account.name.size() + account.fullName.size() + 3) * sizeof(WCHAR);
}

LPWSTR Place(const std::u16string& text, LPWSTR& at) noexcept {
    LPWSTR placed = at;
    text.copy(placed, text.size());
    placed[text.size()] = 0;
    at += text.size() + 1;
    return placed;
}

/// The entries in front, their texts behind them, in one block.
void* MakeBlock(const Account* accounts, std::size_t count, std::size_t bytes, DWORD index) {
    void* block = std::malloc(bytes);
    if (block == nullptr) return nullptr;
    auto* users = static_cast<NET_DISPLAY_USER*>(block);
    auto* at = reinterpret_cast<LPWSTR>(users + count);
    for (std::size_t i = 0; i < count; ++i) {
        users[i].usri1_name = Place(accounts[i].name, at);
        users[i].usri1_comment = Place({}, at);
        users[i].usri1_flags = UF_SCRIPT | UF_NORMAL_ACCOUNT;
        users[i].usri1_full_name = Place(accounts[i].fullName, at);
        users[i].usri1_user_id = accounts[i].number;
        users[i].usri1_next_index = static_cast<DWORD>(index + i + 1);
    }
    return block;
}

}  // namespace
}  // namespace tk::network

using namespace tk::network;

NET_API_STATUS NetQueryDisplayInformation(LPCWSTR ServerName, DWORD Level, DWORD Index, DWORD EntriesRequested,
                                          DWORD PreferredMaximumLength, LPDWORD ReturnedEntryCount,
                                          PVOID* SortedBuffer) {
    if (ReturnedEntryCount == nullptr || SortedBuffer == nullptr) return ERROR_INVALID_PARAMETER;
    *ReturnedEntryCount = 0;
    *SortedBuffer = nullptr;
    if (ServerName != nullptr && !tk::system::IsThisMachine(ServerName)) return NERR_InvalidComputer;
    if (Level != 1) return ERROR_INVALID_LEVEL;
    const std::vector<Account> accounts = ReadAccounts();
    if (Index >= accounts.size()) return NERR_Success;
    const std::size_t most = std::min<std::size_t>(accounts.size() - Index, EntriesRequested);
    std::size_t count = 0;
    std::size_t bytes = 0;
    while (count < most) {
        const std::size_t more = BytesOf(accounts[Index + count]);
        if (count != 0 && bytes + more > PreferredMaximumLength) break;
        bytes += more;
        ++count;
    }
    if (count != 0) {
        *SortedBuffer = MakeBlock(&accounts[Index], count, bytes, Index);
        if (*SortedBuffer == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    }
    *ReturnedEntryCount = static_cast<DWORD>(count);
    return Index + count < accounts.size() ? ERROR_MORE_DATA : NERR_Success;
}

NET_API_STATUS NetApiBufferFree(LPVOID Buffer) {
    std::free(Buffer);
    return NERR_Success;
}
