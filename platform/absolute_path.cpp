#include <mbstring.h>

#include <string>
#include <vector>

#include "platform/messages.h"
#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

/// What a path starts from, and the names behind it.
struct Path {
    std::string root;  // "C:", "\\server\share", "/"; empty for a path that starts from nowhere
    bool rooted = false;
    std::vector<std::string> names;
};

bool IsSeparator(char character) {
    return character == '\\' || character == '/';
}

/// Bytes of the character at a place; its second byte may look like a separator.
std::size_t CharacterAt(const std::string& text, std::size_t at) {
    const bool two = _ismbblead(static_cast<unsigned char>(text[at])) != 0 && at + 1 < text.size();
    return two ? 2 : 1;
}

bool IsDrive(const std::string& text) {
    const char letter = text.empty() ? '\0' : static_cast<char>(text[0] | 0x20);
    return text.size() >= 2 && letter >= 'a' && letter <= 'z' && text[1] == ':';
}

std::vector<std::string> NamesIn(const std::string& text, std::size_t from) {
    std::vector<std::string> names;
    std::string name;
    for (std::size_t at = from; at < text.size();) {
        const std::size_t size = CharacterAt(text, at);
        if (size == 1 && IsSeparator(text[at])) {
            if (!name.empty()) names.push_back(name);
            name.clear();
        } else {
            name.append(text, at, size);
        }
        at += size;
    }
    if (!name.empty()) names.push_back(name);
    return names;
}

Path Read(const char* text) {
    const std::string whole = text != nullptr ? text : "";
    Path path;
    if (IsDrive(whole)) {
        path.root = whole.substr(0, 2);
        path.rooted = whole.size() == 2 || IsSeparator(whole[2]);
        path.names = NamesIn(whole, 2);
        return path;
    }
    path.names = NamesIn(whole, 0);
    path.rooted = !whole.empty() && IsSeparator(whole[0]);
    if (whole.starts_with("\\\\") && path.names.size() >= 2) {  // a share of another machine
        path.root.assign("\\\\");
        path.root.append(path.names[0]).append("\\").append(path.names[1]);
        path.names.erase(path.names.begin(), path.names.begin() + 2);
    } else if (whole.starts_with('/')) {
        path.root.assign("/");
    }
    return path;
}

/// Adds names to a folder. @return false when they lead out above its root
bool Append(std::vector<std::string>& folder, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (name == ".") continue;
        if (name != "..") {
            folder.push_back(name);
        } else if (folder.empty()) {
            return false;
        } else {
            folder.pop_back();
        }
    }
    return true;
}

CString Written(const Path& path) {
    const bool posix = path.root == "/";
    const char separator = posix ? '/' : '\\';
    std::string text;
    if (!posix) text = path.root;
    for (const std::string& name : path.names)
        text.append(1, separator).append(name);
    if (path.names.empty()) text.append(1, separator);
    return CString(text.c_str());
}

}  // namespace
}  // namespace tk::platform

CString GetAbsolutePath(const char* szBase, const char* szTarget) {
    using namespace tk::platform;
    const Path target = Read(szTarget);
    if (target.root.empty() && !target.rooted && target.names.empty()) return kWrongTarget;
    const Path base = Read(szBase);
    // A target behind a drive or a share needs no base; "\name" needs the base's root, and any other the whole base. A
    // '/' in front is the base's root too, where that is a drive or a share.
    const bool baseHasRoot = !base.root.empty() && base.rooted;
    const bool whole = !target.root.empty() && (target.root != "/" || !baseHasRoot || base.root == "/");
    if (whole && !target.rooted) return kWrongTarget;
    if (!whole && !baseHasRoot) return kNoDrive;
    Path result{whole ? target.root : base.root, true, {}};
    if (!whole && !target.rooted && !Append(result.names, base.names)) return kWrongTarget;
    if (!Append(result.names, target.names)) return kWrongTarget;
    return Written(result);
}

char NumberToChar(int nNumber) {
    constexpr char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr int kCount = static_cast<int>(sizeof(kDigits)) - 1;
    return nNumber >= 0 && nNumber < kCount ? kDigits[nNumber] : '\0';
}
