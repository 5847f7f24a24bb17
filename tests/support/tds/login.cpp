#include "support/tds/login.h"

#include "support/tds/bytes.h"

namespace tk::test::tds {
namespace {

constexpr std::size_t kPlaceOfPacketSize = 8;
constexpr std::size_t kPlaceOfUser = 40;
constexpr std::size_t kPlaceOfPassword = 44;
constexpr std::size_t kPlaceOfDatabase = 68;
constexpr std::size_t kMostUnits = 128;

/// The units that an offset and a length at a place lead to.
std::string_view UnitsAt(std::string_view message, std::size_t place) {
    ByteReader head(message);
    head.Bytes(place);
    const std::uint16_t offset = head.U16();
    const std::uint16_t units = head.U16();
    if (units > kMostUnits) throw ProtocolError("a text of the login is too long");
    if (units == 0) return {};
    ByteReader all(message);
    all.Bytes(offset);
    return all.Bytes(std::size_t{units} * 2);
}

}  // namespace

std::string PreLoginAnswer() {
    enum : std::uint8_t { kVersion, kEncryption, kInstance, kThread, kManyResults, kEnd = 0xFF };
    struct Option {
        std::uint8_t kind;
        std::string_view value;
    };
    constexpr std::string_view kNotSupported("\x02", 1);
    constexpr Option kOptions[] = {
        {kVersion, {"\x0F\x00\x07\xD0\x00\x00", 6}},
        {kEncryption, kNotSupported},
        {kInstance, {"\0", 1}},
        {kThread, {"\0\0\0\0", 4}},
        {kManyResults, {"\0", 1}},
    };
    ByteWriter head;
    std::string values;
    constexpr std::size_t kHead = std::size(kOptions) * 5 + 1;
    for (const Option& option : kOptions) {
        // Here the most significant byte comes first.
        const std::size_t place = kHead + values.size();
        head.U8(option.kind).U8(place >> 8).U8(place & 0xFF).U8(0).U8(option.value.size());
        values += option.value;
    }
    head.U8(kEnd);
    return head.Bytes() + values;
}

Login ReadLogin(std::string_view message) {
    ByteReader head(message);
    if (head.U32() != message.size()) throw ProtocolError("the login has another length than it says");
    Login login;
    ByteReader size(message);
    size.Bytes(kPlaceOfPacketSize);
    login.packetSize = size.U32();
    login.user = Utf16ToUtf8(UnitsAt(message, kPlaceOfUser));
    login.database = Utf16ToUtf8(UnitsAt(message, kPlaceOfDatabase));
    std::string plain;
    for (const char hidden : UnitsAt(message, kPlaceOfPassword)) {
        const unsigned byte = static_cast<unsigned char>(hidden) ^ 0xA5u;
        plain += static_cast<char>((byte << 4 | byte >> 4) & 0xFF);
    }
    login.password = Utf16ToUtf8(plain);
    return login;
}

}  // namespace tk::test::tds
