#include "qel/algorithm/info/frame_classifier.hpp"

namespace qel::algorithm::info {

FrameClassifier::~FrameClassifier() = default;

Type FrameClassifier::GetAlgorithmType() const { return Type::FrameClassifier; }

}  // namespace qel::algorithm::info
