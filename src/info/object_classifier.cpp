#include "qel/algorithm/info/object_classifier.hpp"

namespace qel::algorithm::info {

ObjectClassifier::~ObjectClassifier() = default;

Type ObjectClassifier::GetAlgorithmType() const { return Type::ObjectClassifier; }

}  // namespace qel::algorithm::info
