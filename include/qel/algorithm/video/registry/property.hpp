#pragma once

#include <utility>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/registry/info.hpp"
#include "qel/configuration/property.hpp"

namespace qel::algorithm::video::registry {

/// A configurable property of the algorithm class Concrete: name, description, default (whose type is that of the
/// node), limits or choices where there are any, and the member function that takes the value, for example
/// `MakeProperty<Motion>("threshold", "what it does", 2.5, configuration::Range{1.0, 10.0}, &Motion::SetThreshold)`.
template <class Concrete, class... Arguments>
configuration::Property MakeProperty(Arguments&&... arguments) {
    return configuration::MakeProperty<Concrete, video::Algorithm>(std::forward<Arguments>(arguments)...);
}

/// The function of an Info that creates the configuration nodes of all properties under a map node.
/// properties: as in the Info; not empty. The function throws object::BadCast for a node that is no map.
QEL_ALGORITHM_EXPORT Info::CreateNodes CreateNodes(Info::Properties properties);

}  // namespace qel::algorithm::video::registry
