#pragma once

// Ours beside a baseline, in the same run: what the benchmark programs share.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

/// Wall-clock milliseconds that @p work takes.
template <typename Work>
double milliseconds(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/**
 * A run of rows. Each row has a limit, and the program's exit code says whether all were kept.
 *
 * With arguments only the rows so named are run.
 */
class Bench
{
public:
    Bench(int argc, char** argv)
        : m_names(argv + 1, argv + argc)
    {
        std::printf("%-16s %10s %8s %8s %8s %12s %12s\n", "row", "median", "limit", "min", "max", "ours ms",
                    "baseline ms");
    }

    /// Compares two measurements, each given the number of its round and returning milliseconds, so that it
    /// can prepare and clean up outside what counts. They take turns, also in who begins, and the row's
    /// result is the median of the ratios of the rounds: what slows the machine down for a while slows both.
    void ratio(const char* name, double limit, const std::function<double(int)>& ours,
               const std::function<double(int)>& baseline, int rounds = 11)
    {
        if (!wanted(name))
            return;
        std::vector<double> ratios;
        std::vector<double> times;
        std::vector<double> baselineTimes;
        for (int round = 0; round < rounds; ++round) {
            double first = 0;
            double second = 0;
            if (round % 2) {
                second = baseline(round);
                first = ours(round);
            } else {
                first = ours(round);
                second = baseline(round);
            }
            times.push_back(first);
            baselineTimes.push_back(second);
            ratios.push_back(first / second);
        }
        const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
        report(name, median(ratios), limit, *least, *most);
        std::printf(" %12.2f %12.2f\n", median(times), median(baselineTimes));
    }

    /// Measures against a fixed limit in milliseconds; the worst of the rounds counts.
    void worst(const char* name, double limit, const std::function<double(int)>& ours, int rounds = 9)
    {
        if (!wanted(name))
            return;
        std::vector<double> times;
        for (int round = 0; round < rounds; ++round)
            times.push_back(ours(round));
        const auto [least, most] = std::minmax_element(times.begin(), times.end());
        report(name, *most, limit, *least, *most);
        std::printf(" %12.2f\n", median(times));
    }

    int exitCode() const { return m_exceeded ? 1 : 0; }

private:
    bool wanted(const char* name) const
    {
        return m_names.empty() || std::any_of(m_names.begin(), m_names.end(), [name](const char* wanted) {
                   return std::strcmp(wanted, name) == 0;
               });
    }

    void report(const char* name, double result, double limit, double least, double most)
    {
        m_exceeded |= result > limit;
        std::printf("%-16s %10.3f %8.2f %8.3f %8.3f", name, result, limit, least, most);
    }

    std::vector<const char*> m_names;
    bool m_exceeded{false};
};
