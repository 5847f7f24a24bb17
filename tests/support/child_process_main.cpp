#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/child_process.h"

namespace tk::test {

int RunTestsOrJob(int argc, char** argv, std::span<const ChildJob> jobs) {
    if (argc == 3 && std::strcmp(argv[1], "--job") == 0) {
        for (const ChildJob& job : jobs) {
            ChildTalk talk;
            if (std::strcmp(argv[2], job.name) == 0) return job.run(talk);
        }
        return 99;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

}  // namespace tk::test
