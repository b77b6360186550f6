#pragma once

#include <optional>
#include <string>

namespace qel::host {

/// Where a video comes from.
struct Location {
    std::string uri;
    /// The file, when the video is one.
    std::optional<std::string> file;
    /// What to call the video in results and messages: as it was given, without the password of a URI.
    std::string name;
};

/// Whether the video comes from somewhere that may fall silent, go away and come back: a URI that names neither a file
/// nor an open descriptor (fd://).
bool IsStream(Location const& location);

/// Makes a location of a path or of a URI (anything with "://").
/// Throws Error when it names a file that is missing, a directory, empty or not readable.
Location Locate(std::string const& text);

}  // namespace qel::host
