#include "qel/algorithm/info/state_classifier.hpp"

namespace qel::algorithm::info {

StateClassifier::~StateClassifier() = default;

Type StateClassifier::GetAlgorithmType() const { return Type::StateClassifier; }

}  // namespace qel::algorithm::info
