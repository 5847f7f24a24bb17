#include <conio.h>

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <mutex>

namespace {

std::mutex keyLock;
int waitingKey = EOF;

/// Keys one by one, unseen and uninterpreted, for as long as it lives; nothing for an input that is no terminal.
class KeyMode {
public:
    KeyMode() : changed_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!changed_) return;
        termios keys = before_;
        keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG | IEXTEN);
        keys.c_iflag &= ~static_cast<tcflag_t>(ICRNL | INLCR | IXON);  // Enter stays '\r'
        keys.c_cc[VMIN] = 1;
        keys.c_cc[VTIME] = 0;
        changed_ = tcsetattr(STDIN_FILENO, TCSANOW, &keys) == 0;
    }
    KeyMode(const KeyMode&) = delete;
    KeyMode& operator=(const KeyMode&) = delete;
    ~KeyMode() {
        if (changed_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
    }

private:
    termios before_ = {};
    bool changed_;
};

}  // namespace

int _getch() {
    const std::lock_guard lock(keyLock);
    if (waitingKey != EOF) {
        const int key = waitingKey;
        waitingKey = EOF;
        return key;
    }
    const KeyMode mode;
    unsigned char key = 0;
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, &key, 1);
        if (count == 1) return key;
        if (count == 0 || errno != EINTR) return EOF;
    }
}

int _ungetch(int ch) {
    const std::lock_guard lock(keyLock);
    if (ch == EOF || waitingKey != EOF) return EOF;
    return waitingKey = static_cast<unsigned char>(ch);
}
