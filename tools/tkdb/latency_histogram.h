// tools/tkdb/latency_histogram.h - how often each latency occurred, within 6.25 percent, in a fixed room.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace tk::tools {

/// Sixteen steps for each doubling, from a nanosecond on. One thread fills one; they are added up in the end.
class LatencyHistogram {
public:
    void Add(std::uint64_t ns) noexcept {
        ++counts_[StepOf(ns)];
        ++total_;
        if (ns > longest_) longest_ = ns;
    }
    void Add(const LatencyHistogram& other) noexcept;

    std::uint64_t Total() const noexcept { return total_; }
    std::uint64_t LongestNs() const noexcept { return longest_; }
    /// @param share  0.99: what 99 of 100 did not exceed. 0 when there is nothing
    std::uint64_t PercentileNs(double share) const noexcept;

    /// A picture: one bar for each step, times on a logarithmic scale.
    std::string Svg(const std::string& title) const;

private:
    static constexpr int kStepBits = 4;
    static constexpr int kDoublings = 40;
    static constexpr std::size_t kSteps = std::size_t{kDoublings + 1} << kStepBits;

    static std::size_t StepOf(std::uint64_t ns) noexcept;
    static std::uint64_t LowerNs(std::size_t step) noexcept;

    std::array<std::uint64_t, kSteps> counts_{};
    std::uint64_t total_ = 0;
    std::uint64_t longest_ = 0;
};

/// "1.25 ms"
std::string TimeText(std::uint64_t ns);

}  // namespace tk::tools
