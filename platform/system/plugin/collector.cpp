#include "plugin/collector.hpp"

#include <exception>
#include <utility>

#include "qel/system/plugin/report.hpp"

namespace qel::system::plugin {
namespace {

// Static initialisers run on the thread that loads; a plug-in may load plug-ins of its own, hence a chain.
thread_local Collector* innermost = nullptr;

}  // namespace

Collector::Collector() noexcept : outer_(std::exchange(innermost, this)) {}

Collector::~Collector() { innermost = outer_; }

bool Report(Problem problem) noexcept {
    if (innermost == nullptr) return false;
    try {
        innermost->Add(std::move(problem));
        return true;
    } catch (std::exception const&) {
        return false;  // no memory for the report: whoever reports must be able to go on
    }
}

}  // namespace qel::system::plugin
