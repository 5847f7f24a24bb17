#include "tools/tkdb/interruption.h"

namespace tk::tools {
namespace {

volatile std::sig_atomic_t wanted = 0;

void Want(int) {
    wanted = 1;
}

}  // namespace

Interruption::Interruption() {
    wanted = 0;
    struct sigaction action = {};
    action.sa_handler = Want;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // the second one has its usual effect
    sigaction(SIGINT, &action, &interrupt_);
    sigaction(SIGTERM, &action, &terminate_);
}

Interruption::~Interruption() {
    sigaction(SIGINT, &interrupt_, nullptr);
    sigaction(SIGTERM, &terminate_, nullptr);
}

bool Interruption::Wanted() noexcept {
    return wanted != 0;
}

}  // namespace tk::tools
