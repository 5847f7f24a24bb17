#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>

#include <cstdlib>
#include <fstream>

#include "win32/system/event_sinks.h"
#include "win32/system/file_descriptor.h"

namespace tk::system {
namespace {

constexpr int kLockTries = 200;
constexpr long kLockPauseNs = 5'000'000;

/// Holds the file for one record, so that a long one is not torn apart. Whoever was stopped while holding it delays the
/// others by a second, not for ever; writing without it still appends.
class FileLock {
public:
    explicit FileLock(int descriptor) : descriptor_(descriptor) {
        for (int i = 0; i < kLockTries && !held_; ++i) {
            held_ = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
            if (held_ || errno != EWOULDBLOCK) break;
            const timespec pause = {0, kLockPauseNs};
            nanosleep(&pause, nullptr);
        }
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() {
        const int before = errno;
        if (held_) flock(descriptor_, LOCK_UN);
        errno = before;
    }

private:
    int descriptor_;
    bool held_ = false;
};

/// Whether the last writer ended in the middle of its record.
bool IsTorn(int descriptor) {
    struct stat state {};
    char last = '\n';
    if (fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode) || state.st_size == 0) return false;
    return pread(descriptor, &last, 1, state.st_size - 1) == 1 && last != '\n';
}

class EventFile : public EventSink {
public:
    explicit EventFile(FileDescriptor file) : file_(std::move(file)) {}

    bool Write(const EventRecord& record) override {
        std::string line = FormatEventRecord(record) + "\n";
        const FileLock lock(file_.Get());
        if (IsTorn(file_.Get())) line.insert(0, 1, '\n');
        std::string_view rest = line;
        while (!rest.empty()) {
            const ssize_t written = write(file_.Get(), rest.data(), rest.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return false;
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

private:
    FileDescriptor file_;
};

void MakeFolders(const std::string& path) {
    for (auto end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700);
    }
}

}  // namespace

std::unique_ptr<EventSink> OpenEventFile(const std::string& path) {
    // For reading as well: the last byte is looked at before each record.
    constexpr int kMode = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    FileDescriptor file(open(path.c_str(), kMode, 0600));
    if (!file && errno == ENOENT) {
        MakeFolders(path);
        file = FileDescriptor(open(path.c_str(), kMode, 0600));
    }
    if (!file) return nullptr;
    return std::make_unique<EventFile>(std::move(file));
}

std::string EventLogPath() {
    if (const char* named = secure_getenv("TKKERNEL_EVENT_LOG"); named != nullptr && named[0] != 0) return named;
    constexpr const char* kInState = "/tkkernel/events.jsonl";
    const char* state = secure_getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') return std::string(state) + kInState;
    const char* home = secure_getenv("HOME");
    if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/state" + kInState;
    return "/var/tmp/tkkernel-" + std::to_string(geteuid()) + "/events.jsonl";  // a service without a home
}

EventLogReading ReadEventLog(const std::string& path, const std::function<bool(const EventRecord&)>& visit) {
    EventLogReading reading;
    std::ifstream file(path, std::ios::binary);
    reading.opened = file.is_open();
    for (std::string line; std::getline(file, line);) {
        if (file.eof()) break;  // no line break behind it: its writer has not finished
        if (line.empty()) continue;
        const auto record = ParseEventRecord(line);
        if (!record) {
            ++reading.damaged;
            continue;
        }
        ++reading.records;
        if (!visit(*record)) break;
    }
    return reading;
}

}  // namespace tk::system
