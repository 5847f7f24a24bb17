// bench/raw_text_scan.h - five columns as texts through the driver manager, as an expert would write it by hand.
//
// A file of its own, as the driver manager's header and the library's both declare the platform's types.
#pragma once

#include <memory>
#include <string>

namespace tk::bench {

class RawTextScan {
public:
    /// @throws std::runtime_error
    explicit RawTextScan(std::string connection);
    RawTextScan(const RawTextScan&) = delete;
    RawTextScan& operator=(const RawTextScan&) = delete;
    ~RawTextScan();

    /// Reads every row once, a text of the caller's own for each value.
    /// @return bytes of all texts
    long long Run(std::string sql);

private:
    struct Handles;
    std::unique_ptr<Handles> handles_;
};

}  // namespace tk::bench
