#include "qel/algorithm/info/type.hpp"

namespace qel::type {

StringMap const& Strings<algorithm::info::Type>::GetMap() {
    static StringMap const strings = {
        {0, "qel.algorithm.type.ObjectClassifier"}, {1, "qel.algorithm.type.AttributeClassifier"},
        {2, "qel.algorithm.type.StateClassifier"},  {3, "qel.algorithm.type.FrameClassifier"},
        {4, "qel.algorithm.type.ColourClassifier"}, {5, "qel.algorithm.type.Tracker"},
        {6, "qel.algorithm.type.FeatureGenerator"},
    };
    return strings;
}

}  // namespace qel::type
