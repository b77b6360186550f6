#include "qel/algorithm/info/attribute_classifier.hpp"

namespace qel::algorithm::info {

AttributeClassifier::~AttributeClassifier() = default;

Type AttributeClassifier::GetAlgorithmType() const { return Type::AttributeClassifier; }

}  // namespace qel::algorithm::info
