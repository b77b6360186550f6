#include "qel/algorithm/info/tracker.hpp"

namespace qel::algorithm::info {

Tracker::~Tracker() = default;

Type Tracker::GetAlgorithmType() const { return Type::Tracker; }

}  // namespace qel::algorithm::info
