#include "support/tds/packets.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tk::test::tds {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kLongestMessage = 32 * 1024 * 1024;
constexpr std::uint32_t kSmallestPacket = 512;
constexpr std::uint32_t kLargestPacket = 32767;
constexpr unsigned char kLast = 1;

bool IsKnown(unsigned char type) {
    static constexpr PacketType kTypes[] = {PacketType::Batch, PacketType::Call,     PacketType::Attention,
                                            PacketType::Login, PacketType::PreLogin, PacketType::Transaction};
    return std::ranges::find(kTypes, static_cast<PacketType>(type)) != std::end(kTypes);
}

}  // namespace

bool PacketStream::ReadExactly(char* room, std::size_t size, bool isFirst) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = recv(socket_, room + done, size - done, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            if (isFirst && done == 0) return false;
            throw ProtocolError("the connection ends within a packet");
        }
        done += static_cast<std::size_t>(got);
    }
    return true;
}

std::optional<Message> PacketStream::Read() {
    Message message{};
    for (bool isFirst = true;; isFirst = false) {
        std::array<char, kHeaderSize> header;
        if (!ReadExactly(header.data(), header.size(), isFirst)) return std::nullopt;
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(header[i]); };
        const std::size_t size = byte(2) << 8 | byte(3);
        if (!IsKnown(byte(0)) || size < kHeaderSize) throw ProtocolError("no packet of this protocol");
        const auto type = static_cast<PacketType>(byte(0));
        if (!isFirst && type != message.type) throw ProtocolError("a message changes its type");
        message.type = type;
        const std::size_t before = message.bytes.size();
        if (before + size > kLongestMessage) throw ProtocolError("a message is too long");
        message.bytes.resize(before + size - kHeaderSize);
        ReadExactly(message.bytes.data() + before, size - kHeaderSize, false);
        if ((byte(1) & kLast) != 0) return message;
    }
}

bool PacketStream::SendPacket(std::string_view bytes, bool isLast) {
    const std::size_t size = bytes.size() + kHeaderSize;
    std::string packet;
    packet += static_cast<char>(PacketType::Answer);
    packet += static_cast<char>(isLast ? kLast : 0);
    packet += static_cast<char>(size >> 8);
    packet += static_cast<char>(size & 0xFF);
    packet += {0, 1};  // the number of the session
    packet += static_cast<char>(++number_);
    packet += '\0';
    packet += bytes;
    for (std::string_view rest = packet; !rest.empty();) {
        const ssize_t sent = send(socket_, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        rest.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool PacketStream::Write(std::string& bytes, bool isLast) {
    const std::size_t room = packetSize_ - kHeaderSize;
    std::string_view rest = bytes;
    bool isThere = true;
    while (isThere && rest.size() > room) {
        isThere = SendPacket(rest.substr(0, room), false);
        rest.remove_prefix(room);
    }
    if (!isLast) {
        bytes.erase(0, bytes.size() - rest.size());
        return isThere;
    }
    isThere = isThere && SendPacket(rest, true);
    bytes.clear();
    number_ = 0;
    return isThere;
}

bool PacketStream::IsReadable(int milliseconds) const {
    pollfd waiting = {socket_, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) > 0;
}

void PacketStream::SetPacketSize(std::uint32_t size) {
    packetSize_ = std::clamp(size, kSmallestPacket, kLargestPacket);
}

void PacketStream::SetPatience(int seconds) {
    const timeval limit = {seconds, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

}  // namespace tk::test::tds
