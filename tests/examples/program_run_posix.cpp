#include <sys/wait.h>

#include "tests/examples/program_run.h"

namespace tk::test {

std::FILE* OpenPipe(const std::string& command) {
    return popen(command.c_str(), "r");
}

int ClosePipe(std::FILE* pipe) {
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tk::test
