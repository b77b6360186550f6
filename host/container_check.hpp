#pragma once

#include <cstdint>
#include <string>

namespace qel::host {

/// How many bytes a video file lacks of what its own headers announce; 0 when it is whole or cannot be judged.
///
/// Demuxers end a cut file quietly, as if it were meant to end there. Judged are the RIFF (AVI), ISO (MP4, MOV) and
/// Matroska (MKV, WebM) families by the sizes of their outermost parts; nothing else of the file is read.
std::uint64_t CountMissingBytes(std::string const& path);

}  // namespace qel::host
