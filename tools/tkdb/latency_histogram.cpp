#include "tools/tkdb/latency_histogram.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace tk::tools {

std::size_t LatencyHistogram::StepOf(std::uint64_t ns) noexcept {
    constexpr std::uint64_t kFirst = 1U << kStepBits;
    if (ns < kFirst) return static_cast<std::size_t>(ns);
    const int doubling = static_cast<int>(std::bit_width(ns)) - 1 - kStepBits;
    const std::size_t step = (static_cast<std::size_t>(doubling + 1) << kStepBits) + ((ns >> doubling) & (kFirst - 1));
    return std::min(step, kSteps - 1);
}

std::uint64_t LatencyHistogram::LowerNs(std::size_t step) noexcept {
    constexpr std::size_t kFirst = std::size_t{1} << kStepBits;
    if (step < kFirst) return step;
    const std::size_t doubling = (step >> kStepBits) - 1;
    return static_cast<std::uint64_t>(kFirst + (step & (kFirst - 1))) << doubling;
}

void LatencyHistogram::Add(const LatencyHistogram& other) noexcept {
    for (std::size_t i = 0; i < kSteps; ++i)
        counts_[i] += other.counts_[i];
    total_ += other.total_;
    longest_ = std::max(longest_, other.longest_);
}

std::uint64_t LatencyHistogram::PercentileNs(double share) const noexcept {
    if (total_ == 0) return 0;
    const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(total_)));
    std::uint64_t seen = 0;
    for (std::size_t i = 0; i < kSteps; ++i) {
        seen += counts_[i];
        if (counts_[i] != 0 && seen >= wanted) return std::min(LowerNs(i + 1), longest_);
    }
    return longest_;
}

std::string LatencyHistogram::Svg(const std::string& title) const {
    constexpr int kWidth = 800;
    constexpr int kHeight = 320;
    constexpr int kLeft = 20;
    constexpr int kBase = 260;
    constexpr int kRoom = 200;
    std::size_t first = kSteps;
    std::size_t last = 0;
    std::uint64_t most = 1;
    for (std::size_t i = 0; i < kSteps; ++i) {
        if (counts_[i] == 0) continue;
        first = std::min(first, i);
        last = i;
        most = std::max(most, counts_[i]);
    }
    std::string svg = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} {1}\" "
        "font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"{0}\" height=\"{1}\" fill=\"white\"/>\n"
        "<text x=\"{2}\" y=\"24\" font-size=\"15\">{3}</text>\n",
        kWidth, kHeight, kLeft, title);
    if (total_ != 0) {
        const std::size_t bars = last - first + 1;
        const double width = static_cast<double>(kWidth - 2 * kLeft) / static_cast<double>(bars);
        for (std::size_t i = first; i <= last; ++i) {
            const double height = kRoom * static_cast<double>(counts_[i]) / static_cast<double>(most);
            svg += fmt::format(
                "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" fill=\"#3572a5\">"
                "<title>from {}: {}</title></rect>\n",
                kLeft + width * static_cast<double>(i - first), kBase - height, std::max(width - 1, 0.5), height,
                TimeText(LowerNs(i)), counts_[i]);
        }
        constexpr std::size_t kLabels = 6;
        const std::size_t labels = std::min(kLabels, bars);
        for (std::size_t k = 0; k < labels; ++k) {
            const std::size_t step = first + k * bars / labels;
            svg += fmt::format("<text x=\"{:.1f}\" y=\"{}\">{}</text>\n",
                               kLeft + width * static_cast<double>(step - first), kBase + 18, TimeText(LowerNs(step)));
        }
    }
    svg += fmt::format("<text x=\"{}\" y=\"{}\">{} requests, median {}, 99 % within {}, longest {}</text>\n</svg>\n",
                       kLeft, kHeight - 14, total_, TimeText(PercentileNs(0.5)), TimeText(PercentileNs(0.99)),
                       TimeText(longest_));
    return svg;
}

std::string TimeText(std::uint64_t ns) {
    constexpr double kThousand = 1000;
    const auto value = static_cast<double>(ns);
    if (value < kThousand) return fmt::format("{} ns", ns);
    if (value < kThousand * kThousand) return fmt::format("{:.2f} us", value / kThousand);
    if (value < kThousand * kThousand * kThousand) return fmt::format("{:.2f} ms", value / (kThousand * kThousand));
    return fmt::format("{:.2f} s", value / (kThousand * kThousand * kThousand));
}

}  // namespace tk::tools
