#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qel::host {

/// The whole of a file of at most so many bytes. Throws Error with the path and the reason.
std::string ReadFile(std::string const& path, std::size_t maximumSize);

/// Replaces a file in one step: after a failure, or a crash at any time, the path holds the old content or the new one
/// whole. Throws Error with the path and the reason.
void ReplaceFile(std::string const& path, std::string_view content);

/// Removes what ReplaceFile has left beside the file where the process was killed in the middle of it; as far as that
/// can be done. Requires that nobody replaces the file just now; not checked.
void RemoveUnfinished(std::string const& path);

}  // namespace qel::host
