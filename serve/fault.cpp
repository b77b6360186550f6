#include "fault.hpp"

#include <utility>

namespace qel::serve {
namespace {

std::string Summarise(std::vector<Fault> const& faults) {
    std::string text = faults.front().path.empty() ? std::string() : faults.front().path + ": ";
    text += faults.front().reason;
    if (faults.size() > 1) text += " (and " + std::to_string(faults.size() - 1) + " more)";
    return text;
}

}  // namespace

Refused::Refused(Fault fault) : Refused(std::vector<Fault>{std::move(fault)}) {}

Refused::Refused(std::vector<Fault> faults) : std::runtime_error(Summarise(faults)), faults_(std::move(faults)) {}

}  // namespace qel::serve
