#include "qel/algorithm/info/feature_generator.hpp"

namespace qel::algorithm::info {

FeatureGenerator::~FeatureGenerator() = default;

Type FeatureGenerator::GetAlgorithmType() const { return Type::FeatureGenerator; }

}  // namespace qel::algorithm::info
