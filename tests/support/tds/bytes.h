// tests/support/tds/bytes.h - the little-endian bytes of messages, read with every length checked, and written.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "support/tds/text_codes.h"

namespace tk::test::tds {

/// What came is no message of this protocol: the connection is closed.
class ProtocolError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads from bytes that outlive it. @throws ProtocolError when fewer are there than are asked for
class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

    bool AtEnd() const { return rest_.empty(); }
    std::string_view Bytes(std::uint64_t count) {
        if (count > rest_.size()) throw ProtocolError("a message ends too early");
        const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(count));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::uint64_t Number(unsigned size) {
        const std::string_view bytes = Bytes(size);
        std::uint64_t number = 0;
        for (unsigned i = size; i-- > 0;)
            number = number << 8 | static_cast<unsigned char>(bytes[i]);
        return number;
    }
    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
    std::uint64_t U64() { return Number(8); }
    std::int64_t Signed(unsigned size) {
        const unsigned unused = 64 - 8 * size;
        return static_cast<std::int64_t>(Number(size) << unused) >> unused;
    }
    /// UTF-16 of so many units, as UTF-8.
    std::string Text(std::size_t units) { return Utf16ToUtf8(Bytes(units * 2)); }

private:
    std::string_view rest_;
};

class ByteWriter {
public:
    const std::string& Bytes() const { return bytes_; }
    std::string& Bytes() { return bytes_; }

    ByteWriter& Number(std::uint64_t number, unsigned size) {
        for (unsigned i = 0; i < size; ++i)
            bytes_ += static_cast<char>(number >> (8 * i) & 0xFF);
        return *this;
    }
    ByteWriter& U8(std::uint64_t number) { return Number(number, 1); }
    ByteWriter& U16(std::uint64_t number) { return Number(number, 2); }
    ByteWriter& U32(std::uint64_t number) { return Number(number, 4); }
    ByteWriter& U64(std::uint64_t number) { return Number(number, 8); }
    ByteWriter& Raw(std::string_view bytes) {
        bytes_ += bytes;
        return *this;
    }
    /// A text with the number of its UTF-16 units in one byte, or in two, in front; what is longer is cut.
    ByteWriter& ShortText(std::string_view utf8) { return Counted(utf8, 1, 0xFF); }
    ByteWriter& LongText(std::string_view utf8) { return Counted(utf8, 2, 0x7FFF); }

private:
    ByteWriter& Counted(std::string_view utf8, unsigned size, std::size_t most) {
        std::string units = Utf8ToUtf16(utf8);
        if (units.size() > most * 2) units.resize(most * 2);
        return Number(units.size() / 2, size).Raw(units);
    }

    std::string bytes_;
};

}  // namespace tk::test::tds
