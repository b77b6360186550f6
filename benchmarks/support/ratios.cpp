#include "support/ratios.hpp"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace qel::benchmarks {
namespace {

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

class RatioReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            std::string const name = run.run_name.function_name;
            std::size_t const slash = name.rfind('/');
            Group& group = groups_[name.substr(0, slash)];
            group[name.substr(slash + 1)].push_back(run.GetAdjustedRealTime());
        }
    }

    void Finalize() override {
        for (auto const& [name, group] : groups_) {
            auto const ours = group.find("qel");
            if (ours == group.end()) continue;
            auto const [least, most] = std::minmax_element(ours->second.begin(), ours->second.end());
            double const median = Median(ours->second);
            std::cout << std::left << std::setw(44) << name << std::right << std::fixed << std::setprecision(2)
                      << std::setw(10) << median / 1000 << " us (" << *least / 1000 << " to " << *most / 1000 << ")";
            for (auto const& [contestant, times] : group) {
                if (contestant != "qel") std::cout << "  " << contestant << " x" << Median(times) / median;
            }
            std::cout << '\n';
        }
    }

private:
    using Group = std::map<std::string, std::vector<double>>;

    std::map<std::string, Group> groups_;
};

}  // namespace

int RunAndCompare(int argc, char** argv) {
    std::vector<std::string> defaults{"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=9",
                                      "--benchmark_min_time=0.01"};
    std::vector<char*> arguments{argv[0]};
    for (std::string& option : defaults) arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

}  // namespace qel::benchmarks
