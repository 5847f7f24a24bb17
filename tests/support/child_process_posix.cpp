#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/child_process.h"

namespace tk::test {

struct ChildProcess::System {
    pid_t process = -1;
    int to = -1;
    int from = -1;
};

ChildProcess::ChildProcess(const std::string& job) : system_(std::make_unique<System>()) {
    int to[2];
    int from[2];
    if (pipe2(to, O_CLOEXEC) != 0 || pipe2(from, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const std::string name = job;
    system_->process = fork();
    if (system_->process == 0) {
        dup2(to[0], STDIN_FILENO);
        dup2(from[1], STDOUT_FILENO);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        execl("/proc/self/exe", "child", "--job", name.c_str(), static_cast<char*>(nullptr));
        _exit(98);
    }
    close(to[0]);
    close(from[1]);
    system_->to = to[1];
    system_->from = from[0];
    if (system_->process < 0) throw std::runtime_error("no child");
    signal(SIGPIPE, SIG_IGN);
}

ChildProcess::~ChildProcess() {
    if (system_->process > 0) Kill();
    close(system_->to);
    close(system_->from);
}

void ChildProcess::Say(const std::string& line) {
    const std::string whole = line + "\n";
    if (write(system_->to, whole.data(), whole.size()) < 0) return;
}

std::string ChildProcess::Hear() {
    std::string line;
    char unit = 0;
    while (read(system_->from, &unit, 1) == 1 && unit != '\n')
        line += unit;
    return line;
}

void ChildProcess::Kill() {
    kill(system_->process, SIGKILL);
    Wait();
}

int ChildProcess::Id() const {
    return system_->process;
}

void ChildProcess::Stop() {
    kill(system_->process, SIGSTOP);
    int status = 0;
    waitpid(system_->process, &status, WUNTRACED);
}

void ChildProcess::Continue() {
    kill(system_->process, SIGCONT);
}

int ChildProcess::Wait() {
    int status = 0;
    waitpid(system_->process, &status, 0);
    system_->process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tk::test
