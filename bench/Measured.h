#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

/// The times of one thing, in milliseconds.
class Measured {
  public:
    void add(double milliseconds) { m_times.push_back(milliseconds); }

    [[nodiscard]] double median() const {
        std::vector<double> sorted = m_times;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted.at(sorted.size() / 2);
    }

    /// One line; `limit` 0 for a figure that only others are compared with.
    void print(const char* what, double limit) const {
        const auto [least, most] = std::minmax_element(m_times.begin(), m_times.end());
        std::printf("%-48s %8.1f ms  (%.1f to %.1f, %zu runs)", what, median(), *least, *most,
                    m_times.size());
        if (limit > 0)
            std::printf("  at most %.1f ms: %s", limit, median() <= limit ? "reached" : "MISSED");
        std::printf("\n");
    }

  private:
    std::vector<double> m_times;
};
