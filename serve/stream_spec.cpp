#include "stream_spec.hpp"

namespace qel::serve {

bool StreamSpec::NeedsRestart(StreamSpec const& other) const {
    return source != other.source || loop != other.loop || enabled != other.enabled || algorithms != other.algorithms ||
           calibration != other.calibration;
}

}  // namespace qel::serve
