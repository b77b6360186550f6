#pragma once

#include "stream.hpp"

namespace qel::serve {

/// Opens a stream's source: a file once or over and over, anything else again whenever it is lost.
/// As StreamParts::Open. Throws host::Error for a file that cannot be read, or is not there.
std::unique_ptr<host::FrameSource> OpenStream(StreamSpec const& spec, std::vector<media::ColourFormat> const& formats,
                                              std::function<bool()> const& stop,
                                              host::ReconnectingSource::Say const& say);

}  // namespace qel::serve
