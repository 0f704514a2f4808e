#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

/// Two benchmarks of one run, to be told as a ratio: machines differ and are noisy, ratios of
/// interleaved runs much less so.
struct Ratio {
    std::string what;
    /// Names of benchmarks; the ratio is the time of the first over that of the second.
    std::string numerator;
    std::string denominator;
    /// What the ratio ought to be, in words.
    std::string goal;
};

/// Prints the usual table, and behind it the ratios of medians.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter(std::vector<Ratio> ratios)
        : ConsoleReporter(OO_Tabular), ratios_(std::move(ratios))
    {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
                times_[nameOf(run)] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-58s %10s   %s\n", "Ratio of medians", "ratio", "goal");
        for (const Ratio& ratio : ratios_)
            std::printf("%-58s %10.3f   %s\n", ratio.what.c_str(),
                        times_[ratio.numerator] / times_[ratio.denominator], ratio.goal.c_str());
    }

private:
    static std::string nameOf(const Run& run)
    {
        const auto& name = run.run_name;
        return name.args.empty() ? name.function_name : name.function_name + "/" + name.args;
    }

    std::vector<Ratio> ratios_;
    /// Medians in seconds, by the name of the benchmark.
    std::map<std::string, double> times_;
};

/// Runs the benchmarks of this program, interleaved and five times each unless the command line
/// says otherwise, and prints their ratios.
inline int runBenchmarks(int argc, char** argv, std::vector<Ratio> ratios)
{
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string aggregates = "--benchmark_display_aggregates_only=true";
    std::vector<char*> arguments{argv[0], repetitions.data(), interleaving.data(),
                                 aggregates.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    RatioReporter reporter(std::move(ratios));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
