#include "tests/examples/program_run.h"

namespace tk::test {

std::FILE* OpenPipe(const std::string& command) {
    return _popen(('"' + command + '"').c_str(), "r");  // the shell takes the outer quotes off
}

int ClosePipe(std::FILE* pipe) {
    return _pclose(pipe);
}

}  // namespace tk::test
