#include "support/ratios.hpp"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include "support/masks.hpp"

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
            // Processor time: what else runs on the machine counts less.
            group[name.substr(slash + 1)].push_back(run.GetAdjustedCPUTime());
        }
    }

    /// All groups as JSON: {"group": {"contestant": [nanoseconds, ...], ...}, ...}.
    void Write(std::string const& file) const {
        std::ofstream out(file);
        char const* groupSeparator = "{\n";
        for (auto const& [name, group] : groups_) {
            out << std::exchange(groupSeparator, ",\n") << '"' << name << "\": {";
            char const* separator = "";
            for (auto const& [contestant, times] : group) {
                out << std::exchange(separator, ", ") << '"' << contestant << "\": [";
                for (std::size_t i = 0; i < times.size(); ++i) out << (i == 0 ? "" : ", ") << times[i];
                out << ']';
            }
            out << '}';
        }
        out << (groups_.empty() ? "{}\n" : "\n}\n");
        if (!out.flush()) throw std::runtime_error(file + ": cannot be written");
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

/// Takes "--name=VALUE" out of the arguments; empty when it is not there.
std::string TakeOption(std::vector<char*>& arguments, std::string const& name) {
    std::string const start = "--" + name + "=";
    auto const found = std::find_if(arguments.begin(), arguments.end(),
                                    [&](std::string_view argument) { return argument.starts_with(start); });
    if (found == arguments.end()) return {};
    std::string value = std::string(*found).substr(start.size());
    arguments.erase(found);
    return value;
}

}  // namespace

int RunProgram(int argc, char** argv, std::function<void()> const& registerBenchmarks) try {
    std::vector<std::string> defaults{"--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=9",
                                      "--benchmark_min_time=0.01"};
    std::vector<char*> arguments{argv[0]};
    for (std::string& option : defaults) arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    UseMasksOf(TakeOption(arguments, "masks"));
    std::string const table = TakeOption(arguments, "table");
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    cv::setNumThreads(1);
    registerBenchmarks();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!table.empty()) reporter.Write(table);
    return 0;
} catch (std::exception const& error) {
    std::cerr << argv[0] << ": " << error.what() << '\n';
    return 1;
}

}  // namespace qel::benchmarks
