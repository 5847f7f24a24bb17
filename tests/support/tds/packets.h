// tests/support/tds/packets.h - messages, cut into packets that each have a header of eight bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/tds/bytes.h"

namespace tk::test::tds {

enum class PacketType : std::uint8_t {
    Batch = 1,
    Call = 3,
    Answer = 4,
    Attention = 6,
    Transaction = 14,
    Login = 16,
    PreLogin = 18,
};

struct Message {
    PacketType type;
    std::string bytes;
};

/// Borrows a socket. One thread uses it.
class PacketStream {
public:
    explicit PacketStream(int socket) : socket_(socket) {}

    /// The next message, whole; nothing when the other side is gone.
    /// @throws ProtocolError when what comes is none, ends within a packet, or is longer than 32 MiB
    std::optional<Message> Read();

    /// Sends bytes of an answer as packets: the whole ones now, and the rest as well when it is the last.
    /// @return whether the other side is still there
    bool Write(std::string& bytes, bool isLast);

    /// Whether something has come, or the other side has gone, within the time.
    bool IsReadable(int milliseconds) const;

    void SetPacketSize(std::uint32_t size);
    std::uint32_t PacketSize() const { return packetSize_; }

    /// How long Read waits for bytes. @param seconds  0: for ever
    void SetPatience(int seconds);

private:
    bool ReadExactly(char* room, std::size_t size, bool isFirst);
    bool SendPacket(std::string_view bytes, bool isLast);

    int socket_;
    std::uint32_t packetSize_ = 4096;
    std::uint8_t number_ = 0;
};

}  // namespace tk::test::tds
