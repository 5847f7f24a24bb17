#include "win32/shell/link_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "tkwin32/text.h"
#include "winbase.h"

namespace tk::shell {
namespace {

constexpr std::size_t kHeaderSize = 0x4C;
constexpr unsigned char kClass[16] = {0x01, 0x14, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

enum Flag : DWORD {
    kHasTargetList = 0x1,
    kHasLinkInfo = 0x2,
    kHasDescription = 0x4,
    kHasRelativePath = 0x8,
    kHasDirectory = 0x10,
    kHasArguments = 0x20,
    kHasIconPath = 0x40,
    kIsUnicode = 0x80,
};

/// The texts behind the target, in the order of the file.
constexpr struct {
    DWORD flag;
    std::u16string Link::*text;
} kTexts[] = {
    {kHasDescription, &Link::description}, {kHasRelativePath, &Link::relativePath}, {kHasDirectory, &Link::directory},
    {kHasArguments, &Link::arguments},     {kHasIconPath, &Link::iconPath},
};

constexpr DWORD kInfoHeader = 0x24;  // with the places of the UTF-16 texts
constexpr DWORD kLocalTarget = 1;
constexpr DWORD kFixedDrive = 3;

class Writer {
public:
    template <typename Number>
    void Put(Number value) {
        for (std::size_t i = 0; i < sizeof value; ++i)
            bytes_ += static_cast<char>(static_cast<std::make_unsigned_t<Number>>(value) >> (8 * i));
    }
    void PutBytes(std::string_view bytes) { bytes_ += bytes; }
    void PutUnits(std::u16string_view text) {
        for (const char16_t unit : text)
            Put<std::uint16_t>(unit);
    }
    std::size_t Size() const { return bytes_.size(); }
    std::string Take() { return std::move(bytes_); }

private:
    std::string bytes_;
};

/// Reads forwards; a place beyond the end makes the whole reading a failure.
class Source {
public:
    explicit Source(std::string_view bytes) : bytes_(bytes) {}

    template <typename Number>
    Number Get() {
        Number value{};
        if (!Has(sizeof value)) return value;
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    std::string_view GetBytes(std::size_t count) {
        if (!Has(count)) return {};
        at_ += count;
        return bytes_.substr(at_ - count, count);
    }
    bool Failed() const { return failed_; }

private:
    bool Has(std::size_t count) {
        failed_ = failed_ || count > bytes_.size() - at_;
        return !failed_;
    }

    std::string_view bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

std::u16string UnitsOf(std::string_view bytes) {
    std::u16string text(bytes.size() / 2, u'\0');
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * 2);
    return text;
}

/// Where the target is: a volume without a name, the path in both encodings.
std::string LinkInfo(const std::u16string& target) {
    const std::string narrow = text::Utf16ToGbk(target) + '\0';
    constexpr DWORD kVolumeSize = 0x11;
    const auto path = kInfoHeader + kVolumeSize;
    const auto suffix = static_cast<DWORD>(path + narrow.size());
    const DWORD wide = suffix + 1;
    const auto wideSuffix = static_cast<DWORD>(wide + (target.size() + 1) * 2);
    Writer info;
    for (const DWORD value :
         {wideSuffix + 2, kInfoHeader, kLocalTarget, kInfoHeader, path, DWORD{0}, suffix, wide, wideSuffix})
        info.Put(value);
    for (const DWORD value : {kVolumeSize, kFixedDrive, DWORD{0}, DWORD{0x10}})
        info.Put(value);
    info.PutBytes(std::string(1, '\0'));
    info.PutBytes(narrow);
    info.PutBytes(std::string(1, '\0'));
    info.PutUnits(target);
    info.Put<std::uint16_t>(0);
    info.Put<std::uint16_t>(0);
    return info.Take();
}

/// A text inside the information about the target, up to its zero; nothing when it does not end there.
std::optional<std::u16string> TextAt(std::string_view info, DWORD place, bool wide) {
    if (place >= info.size()) return std::nullopt;
    const std::string_view rest = info.substr(place);
    if (!wide) {
        const auto end = rest.find('\0');
        if (end == std::string_view::npos) return std::nullopt;
        return text::GbkToUtf16(rest.substr(0, end));
    }
    const std::u16string units = UnitsOf(rest);
    const auto end = units.find(u'\0');
    return end == std::u16string::npos ? std::nullopt : std::optional(units.substr(0, end));
}

std::optional<std::u16string> TargetOf(std::string_view info) {
    Source source(info);
    source.Get<DWORD>();  // the size
    const auto header = source.Get<DWORD>();
    const auto flags = source.Get<DWORD>();
    source.Get<DWORD>();  // the volume
    const auto path = source.Get<DWORD>();
    source.Get<DWORD>();  // the network
    const auto suffix = source.Get<DWORD>();
    if (source.Failed()) return std::nullopt;
    if ((flags & kLocalTarget) == 0) return std::u16string();
    const bool wide = header >= kInfoHeader;
    const auto widePath = wide ? source.Get<DWORD>() : path;
    const auto wideSuffix = wide ? source.Get<DWORD>() : suffix;
    if (source.Failed()) return std::nullopt;
    const auto base = TextAt(info, widePath, wide);
    const auto rest = TextAt(info, wideSuffix, wide);
    if (!base || !rest) return std::nullopt;
    return *base + *rest;
}

struct TargetFacts {
    DWORD attributes = 0;
    DWORD size = 0;
};

TargetFacts LookAt(const std::u16string& target) {
    struct stat state {};
    if (target.empty() || stat(text::Utf16ToUtf8(target).c_str(), &state) != 0) return {};
    if (S_ISDIR(state.st_mode)) return {FILE_ATTRIBUTE_DIRECTORY, 0};
    return {FILE_ATTRIBUTE_ARCHIVE, static_cast<DWORD>(state.st_size)};
}

}  // namespace

std::string WriteLinkFile(const Link& link) {
    DWORD flags = kIsUnicode;
    if (!link.target.empty()) flags |= kHasLinkInfo;
    for (const auto& part : kTexts) {
        if (!(link.*part.text).empty()) flags |= part.flag;
    }
    const TargetFacts facts = LookAt(link.target);
    Writer file;
    file.Put(static_cast<DWORD>(kHeaderSize));
    file.PutBytes({reinterpret_cast<const char*>(kClass), sizeof kClass});
    file.Put(flags);
    file.Put(facts.attributes);
    file.PutBytes(std::string(24, '\0'));  // three times that nobody needs
    file.Put(facts.size);
    file.Put(link.icon);
    file.Put(link.show);
    file.Put(link.hotkey);
    file.PutBytes(std::string(10, '\0'));
    if (!link.target.empty()) file.PutBytes(LinkInfo(link.target));
    for (const auto& part : kTexts) {
        const std::u16string text = (link.*part.text).substr(0, 0xFFFF);
        if (text.empty()) continue;
        file.Put(static_cast<std::uint16_t>(text.size()));
        file.PutUnits(text);
    }
    file.Put<DWORD>(0);  // nothing else follows
    return file.Take();
}

std::optional<Link> ReadLinkFile(std::string_view content) {
    Source file(content);
    const auto size = file.Get<DWORD>();
    const std::string_view identifier = file.GetBytes(sizeof kClass);
    if (file.Failed() || size != kHeaderSize || std::memcmp(identifier.data(), kClass, sizeof kClass) != 0)
        return std::nullopt;
    Link link;
    const auto flags = file.Get<DWORD>();
    file.GetBytes(4 + 24 + 4);
    link.icon = file.Get<LONG>();
    link.show = file.Get<LONG>();
    link.hotkey = file.Get<WORD>();
    file.GetBytes(10);
    if ((flags & kHasTargetList) != 0) file.GetBytes(file.Get<WORD>());
    if ((flags & kHasLinkInfo) != 0) {
        const auto length = file.Get<DWORD>();
        if (length < 4) return std::nullopt;
        std::string info(4, '\0');
        info += file.GetBytes(length - 4);
        auto target = file.Failed() ? std::nullopt : TargetOf(info);
        if (!target) return std::nullopt;
        link.target = *std::move(target);
    }
    const bool wide = (flags & kIsUnicode) != 0;
    for (const auto& part : kTexts) {
        if ((flags & part.flag) == 0) continue;
        const auto count = file.Get<WORD>();
        const std::string_view bytes = file.GetBytes(wide ? count * 2u : count);
        link.*part.text = wide ? UnitsOf(bytes) : text::GbkToUtf16(bytes);
    }
    return file.Failed() ? std::nullopt : std::optional(std::move(link));
}

}  // namespace tk::shell
