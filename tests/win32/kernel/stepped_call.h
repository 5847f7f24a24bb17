// A call in another process that is killed after so many machine instructions.
#pragma once

#include "tests/support/child_process.h"

namespace tk::test {

struct Stepped {
    bool allowed;   // this process may trace its children
    bool finished;  // the call came to its end before
    long steps;     // instructions that were carried out
};

/// Runs one of the calls of StepJob.
Stepped RunSteps(const char* call, long most);

/// The child's side.
int StepJob(ChildTalk& talk);

}  // namespace tk::test
