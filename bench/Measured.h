#pragma once

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

/// Prints one line of `./dev bench`: the figure and whether it keeps its limit. Without a limit, it is only
/// there for comparison. bench/processes.py prints the same line.
inline void printFigure(const char* what, double value, const char* unit, std::optional<double> limit,
                        const std::string& detail = {}) {
    std::printf("%-48s %8.1f %-2s", what, value, unit);
    if (!detail.empty())
        std::printf("  (%s)", detail.c_str());
    if (limit)
        std::printf("  at most %.1f %s: %s", *limit, unit, value <= *limit ? "reached" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
}

/// The same for a time that is to be a fraction of another one, `bare`. Both in milliseconds.
inline void printRatio(const char* what, double bare, double own, std::optional<double> wanted) {
    const double ratio = bare / own;
    std::printf("  %-34s bare %8.0f ms, ours %8.0f ms: %6.1f times faster", what, bare, own, ratio);
    if (wanted)
        std::printf("  at least %.1f: %s", *wanted, ratio >= *wanted ? "reached" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
}

/// The times of several runs, in milliseconds.
class Measured {
  public:
    void add(double milliseconds) { m_times.push_back(milliseconds); }

    [[nodiscard]] double median() const {
        std::vector<double> sorted = m_times;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted.at(sorted.size() / 2);
    }

    /// Prints the median beside the extremes.
    void print(const char* what, std::optional<double> limit) const {
        const auto [least, most] = std::minmax_element(m_times.begin(), m_times.end());
        char detail[64];
        std::snprintf(detail, sizeof detail, "%.1f to %.1f, %zu runs", *least, *most, m_times.size());
        printFigure(what, median(), "ms", limit, detail);
    }

  private:
    std::vector<double> m_times;
};
