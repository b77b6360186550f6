// The program that loads a model and runs it on zeros before another process does. What goes wrong here, goes wrong
// here only: memory and processor time are bounded, and a crash is a verdict too.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "back_end.hpp"
#include "load_back_end.hpp"
#include "memory_file.hpp"
#include "trial_protocol.hpp"

namespace qel::inference {
namespace {

constexpr rlim_t ProcessorSeconds = 60;
[[maybe_unused]] constexpr rlim_t Memory = rlim_t{4} << 30U, MemoryForAByte = 8;
constexpr std::size_t MaximumValues = std::size_t{1} << 28U;

[[maybe_unused]] void LimitTo(__rlimit_resource resource, rlim_t most) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return;
    limit.rlim_cur = std::min(limit.rlim_cur, most);
    limit.rlim_max = std::min(limit.rlim_max, most);
    (void)setrlimit(resource, &limit);
}

void LimitResources([[maybe_unused]] std::size_t modelSize) {
    LimitTo(RLIMIT_CPU, ProcessorSeconds);
    LimitTo(RLIMIT_CORE, 0);
    // Sanitizers reserve more addresses than there is memory.
#ifndef QEL_SANITIZED
    LimitTo(RLIMIT_AS, Memory + MemoryForAByte * modelSize);
#endif
}

void Run(Network& network, std::vector<std::size_t> shape, std::size_t samples) {
    shape[0] = samples;
    std::size_t values = 1;
    for (std::size_t const size : shape) {
        if (size > MaximumValues / values) throw std::runtime_error("takes more than 2^28 numbers at once");
        values *= size;
    }
    (void)network.Run(Tensor{shape, std::vector<float>(values, 0)});
}

void Try(std::vector<std::string> const& arguments) {
    MemoryFile const model{system::Descriptor(trial::ModelDescriptor)};
    LimitResources(model.GetBytes().size());
    auto const network = LoadBackEnd(arguments.at(1).c_str()).Load(model.GetBytes());
    std::size_t const maxBatchSize = std::stoull(arguments.at(2));
    std::vector<std::size_t> shape;
    for (std::size_t i = 3; i < arguments.size(); ++i) shape.push_back(std::stoull(arguments[i]));
    if (shape.empty() || std::find(shape.begin() + 1, shape.end(), 0U) != shape.end()) return;
    for (std::size_t samples = 1; samples <= std::min<std::size_t>(maxBatchSize, 2); ++samples) {
        Run(*network, shape, samples);
    }
}

/// Ends the process at once: a library that has met a broken model need not be able to clean up after it.
[[noreturn]] void Give(std::string_view verdict) {
    _exit(write(trial::VerdictDescriptor, verdict.data(), verdict.size()) < 0 ? EXIT_FAILURE : EXIT_SUCCESS);
}

}  // namespace
}  // namespace qel::inference

int main(int count, char** arguments) {
    using qel::inference::Give;
    // Whoever asked may be gone; then nobody needs the verdict.
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        qel::inference::Try({arguments, arguments + count});
    } catch (std::exception const& error) {
        Give(*error.what() == '\0' ? "cannot be loaded" : error.what());
    }
    Give(qel::inference::trial::Passed);
}
