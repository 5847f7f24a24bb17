#include <windows.h>

#include <stdexcept>

#include "tests/support/child_process.h"

namespace tk::test {

struct ChildProcess::System {
    HANDLE process = nullptr;
    HANDLE to = nullptr;
    HANDLE from = nullptr;
};

ChildProcess::ChildProcess(const std::string& job) : system_(std::make_unique<System>()) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE childIn = nullptr;
    HANDLE childOut = nullptr;
    if (!CreatePipe(&childIn, &system_->to, &inherited, 0) || !CreatePipe(&system_->from, &childOut, &inherited, 0)) {
        throw std::runtime_error("no pipe");
    }
    SetHandleInformation(system_->to, HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(system_->from, HANDLE_FLAG_INHERIT, 0);
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string command = '"' + std::string(program) + "\" --job " + job;
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = childIn;
    start.hStdOutput = childOut;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made = {};
    const BOOL started =
        CreateProcessA(program, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &made);
    CloseHandle(childIn);
    CloseHandle(childOut);
    if (!started) throw std::runtime_error("no child");
    CloseHandle(made.hThread);
    system_->process = made.hProcess;
}

ChildProcess::~ChildProcess() {
    if (system_->process != nullptr) Kill();
    CloseHandle(system_->to);
    CloseHandle(system_->from);
}

void ChildProcess::Say(const std::string& line) {
    const std::string whole = line + "\n";
    DWORD written = 0;
    WriteFile(system_->to, whole.data(), static_cast<DWORD>(whole.size()), &written, nullptr);
}

std::string ChildProcess::Hear() {
    std::string line;
    char unit = 0;
    DWORD count = 0;
    while (ReadFile(system_->from, &unit, 1, &count, nullptr) && count == 1 && unit != '\n') {
        if (unit != '\r') line += unit;
    }
    return line;
}

void ChildProcess::Kill() {
    TerminateProcess(system_->process, static_cast<UINT>(-1));
    Wait();
}

int ChildProcess::Wait() {
    WaitForSingleObject(system_->process, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(system_->process, &code);
    CloseHandle(system_->process);
    system_->process = nullptr;
    return static_cast<int>(code);
}

}  // namespace tk::test
