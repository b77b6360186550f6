#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace qel::serve {

/// What is wrong with one value of a request.
struct Fault {
    /// Where: dotted, as in the configuration tree ("streams.gate.settings.Motion.minimum_area"); empty for the whole.
    std::string path;
    /// What is wrong and what would be right, as one sentence without its full stop.
    std::string reason;

    bool operator==(Fault const&) const = default;
};

/// A request that is refused as a whole, for each of these reasons.
class Refused : public std::runtime_error {
public:
    /// faults: at least one; what() tells the first and how many more there are.
    explicit Refused(std::vector<Fault> faults);
    explicit Refused(Fault fault);

    std::vector<Fault> const& GetFaults() const noexcept { return faults_; }

private:
    std::vector<Fault> faults_;
};

}  // namespace qel::serve
