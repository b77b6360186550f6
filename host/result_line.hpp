#pragma once

#include <string>

#include "frame_sink.hpp"

namespace qel::host {

/// The results of one frame as a line of JSON, with its line end.
///
/// Numbers are as short as they can be without losing a bit; a number that JSON cannot express is null. An attribute
/// of an object becomes one more member; one that bears the name of a fixed member is left out.
std::string MakeResultLine(std::string const& source, AnalysedFrame const& analysed);

}  // namespace qel::host
