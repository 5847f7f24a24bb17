// tools/tkdb/progress.h - a line on standard error that tells how far a long work has come.
#pragma once

#include <cstddef>
#include <string>

namespace tk::tools {

/// Shows nothing when standard error is no terminal or the work ends within half a second.
class Progress {
public:
    explicit Progress(std::string label);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance(std::size_t count = 1);

private:
    void Draw();

    std::string label_;
    std::size_t done_ = 0;
    long long started_;
    long long drawn_ = 0;
    bool terminal_;
    bool visible_ = false;
};

}  // namespace tk::tools
