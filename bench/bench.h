#pragma once

// Compares the library with a baseline in the same run; shared by all benchmark programs.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

/// Wall-clock milliseconds that @p work takes.
template <typename Work>
double milliseconds(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Ends the program because of a wrong result, which makes the measurement meaningless.
[[noreturn]] inline void fail(const char* what)
{
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(2);
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/**
 * Runs benchmark rows and prints each as "name ours baseline ratio limit ok|OVER". The program's exit code is
 * 1 if a limit was exceeded.
 *
 * Command line: [--size N] [--rounds N] [--verbose] [NAME...]. With names, only the rows with these names are
 * run, and those whose name begins with one and a hyphen. --size sets the size of the work and skips rows
 * without a size. --verbose prints each round to standard error.
 */
class Bench
{
public:
    /// Measures one round and returns the result, in milliseconds unless the row says otherwise. The argument
    /// is the number of the round, so that data can differ between rounds; preparation and cleanup are not
    /// measured.
    using Measure = std::function<double(int)>;

    Bench(int argc, char** argv)
    {
        for (int i = 1; i < argc; ++i) {
            const std::string argument = argv[i];
            if (argument == "--size" && i + 1 < argc)
                m_size = std::atoi(argv[++i]);
            else if (argument == "--rounds" && i + 1 < argc)
                m_rounds = std::atoi(argv[++i]);
            else if (argument == "--verbose")
                m_isVerbose = true;
            else
                m_names.push_back(argument);
        }
    }

    /// The size of a row's work: from the command line, or @p standard.
    int size(int standard) const { return m_size > 0 ? m_size : standard; }

    /// Whether the size of the command line is in a row's range; for rows with a fixed or limited size.
    bool hasSize(int least, int most) const { return m_size == 0 || (m_size >= least && m_size <= most); }

    /// Whether to run a row; for preparation that is done once for all its rounds.
    bool wants(const std::string& name) const
    {
        return m_names.empty() || std::any_of(m_names.begin(), m_names.end(), [&](const std::string& wanted) {
                   return name == wanted || name.compare(0, wanted.size() + 1, wanted + '-') == 0;
               });
    }

    /// Compares two measurements. They alternate, also in which comes first, and the result is the median of
    /// the ratios of the rounds, so a temporary slowdown of the machine affects both.
    void ratio(const std::string& name, double limit, const Measure& ours, const Measure& baseline,
               int rounds = 11)
    {
        if (!wants(name))
            return;
        std::vector<double> ratios;
        std::vector<double> results;
        std::vector<double> baselineResults;
        for (int round = 0; round < (m_rounds ? m_rounds : rounds); ++round) {
            double first = 0;
            double second = 0;
            if (round % 2) {
                second = baseline(round);
                first = ours(round);
            } else {
                first = ours(round);
                second = baseline(round);
            }
            results.push_back(first);
            baselineResults.push_back(second);
            ratios.push_back(first / second);
            tell(name, first, second);
        }
        const double result = median(ratios);
        m_exceeded |= result > limit;
        std::printf("%s %.2f %.2f %.3f %g %s\n", name.c_str(), median(results), median(baselineResults),
                    result, limit, verdict(result, limit));
        std::fflush(stdout);
    }

    /// Measures against a fixed limit in milliseconds; the worst of the rounds counts.
    void worst(const std::string& name, double limit, const Measure& ours, int rounds = 9)
    {
        const std::vector<double> results = alone(name, ours, rounds);
        if (results.empty())
            return;
        const double result = *std::max_element(results.begin(), results.end());
        m_exceeded |= result > limit;
        printAlone(name, result, limit);
    }

    /// As worst(), but with the median, and exceeding the limit does not change the exit code.
    void reported(const std::string& name, double limit, const Measure& ours, int rounds = 9)
    {
        const std::vector<double> results = alone(name, ours, rounds);
        if (!results.empty())
            printAlone(name, median(results), limit);
    }

    int exitCode() const { return m_exceeded ? 1 : 0; }

private:
    std::vector<double> alone(const std::string& name, const Measure& ours, int rounds) const
    {
        std::vector<double> results;
        for (int round = 0; wants(name) && round < (m_rounds ? m_rounds : rounds); ++round) {
            results.push_back(ours(round));
            tell(name, results.back(), 0);
        }
        return results;
    }

    void tell(const std::string& name, double ours, double baseline) const
    {
        if (m_isVerbose)
            std::fprintf(stderr, "  %s %.3f %.3f %.3f\n", name.c_str(), ours, baseline, ours / baseline);
    }

    static void printAlone(const std::string& name, double result, double limit)
    {
        std::printf("%s %.2f - - %g %s\n", name.c_str(), result, limit, verdict(result, limit));
        std::fflush(stdout);
    }

    static const char* verdict(double result, double limit) { return result > limit ? "OVER" : "ok"; }

    std::vector<std::string> m_names;
    int m_size{0};
    int m_rounds{0};
    bool m_isVerbose{false};
    bool m_exceeded{false};
};
