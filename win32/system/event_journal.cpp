// The journal's own datagram protocol, spoken directly: a field is "NAME=value\n", or, where the value may hold line
// breaks, "NAME\n", its length as 64-bit little-endian number, the value, "\n".
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "win32/system/base64.h"
#include "win32/system/event_sinks.h"
#include "win32/system/file_descriptor.h"
#include "winbase.h"

namespace tk::system {
namespace {

constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

void AddField(std::string& message, std::string_view name, std::string_view value) {
    message += name;
    message += '\n';
    for (unsigned shift = 0; shift < 64; shift += 8)
        message += static_cast<char>(value.size() >> shift & 0xFF);
    message += value;
    message += '\n';
}

/// The syslog severity of a type.
const char* PriorityOf(WORD type) noexcept {
    switch (type) {
        case EVENTLOG_ERROR_TYPE:
            return "3";
        case EVENTLOG_WARNING_TYPE:
        case EVENTLOG_AUDIT_FAILURE:
            return "4";
        case EVENTLOG_AUDIT_SUCCESS:
            return "5";
        default:
            return "6";
    }
}

/// What the journal shows: the strings one after the other with plain line breaks (it takes a text with others for
/// bytes), without the one at their end.
std::string ShownText(const EventRecord& record) {
    std::string all;
    for (const std::string& text : record.strings) {
        for (const char character : text) {
            if (character != '\r') all += character;
        }
    }
    all.resize(all.find_last_not_of('\n') + 1);
    return all;
}

std::string Datagram(const EventRecord& record) {
    std::string message;
    AddField(message, "MESSAGE", ShownText(record));
    AddField(message, "PRIORITY", PriorityOf(record.type));
    AddField(message, "SYSLOG_IDENTIFIER", record.source);
    AddField(message, "TK_EVENT_SOURCE", record.source);
    AddField(message, "TK_EVENT_TYPE", std::to_string(record.type));
    AddField(message, "TK_EVENT_CATEGORY", std::to_string(record.category));
    AddField(message, "TK_EVENT_ID", std::to_string(record.id));
    for (std::size_t i = 0; i < record.strings.size(); ++i) {
        AddField(message, "TK_EVENT_STRING_" + std::to_string(i + 1), record.strings[i]);
    }
    if (!record.data.empty()) AddField(message, "TK_EVENT_DATA", ToBase64(record.data));
    return message;
}

class Journal : public EventSink {
public:
    explicit Journal(FileDescriptor socket) : socket_(std::move(socket)) {}

    bool Write(const EventRecord& record) override {
        const std::string message = Datagram(record);
        if (send(socket_.Get(), message.data(), message.size(), MSG_NOSIGNAL) >= 0) return true;
        return (errno == EMSGSIZE || errno == ENOBUFS) && SendAsFile(message);
    }

private:
    /// A record too long for a datagram travels as a sealed file in memory.
    bool SendAsFile(std::string_view message) {
        const FileDescriptor file(memfd_create("tk-event", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        if (!file) return false;
        while (!message.empty()) {
            const ssize_t written = write(file.Get(), message.data(), message.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return false;
            message.remove_prefix(static_cast<std::size_t>(written));
        }
        constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
        if (fcntl(file.Get(), F_ADD_SEALS, kSeals) != 0) return false;

        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        msghdr header{};
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        cmsghdr* rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int));
        const int descriptor = file.Get();
        std::memcpy(CMSG_DATA(rights), &descriptor, sizeof descriptor);
        return sendmsg(socket_.Get(), &header, MSG_NOSIGNAL) >= 0;
    }

    FileDescriptor socket_;
};

}  // namespace

std::unique_ptr<EventSink> OpenJournal() {
    FileDescriptor opened(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!opened) return nullptr;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, kJournalSocket, sizeof address.sun_path - 1);
    // Without its daemon the socket is missing or refuses; a record sent blindly would be lost.
    if (connect(opened.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return nullptr;
    const timeval atMost = {1, 0};
    setsockopt(opened.Get(), SOL_SOCKET, SO_SNDTIMEO, &atMost, sizeof atMost);
    return std::make_unique<Journal>(std::move(opened));
}

}  // namespace tk::system
