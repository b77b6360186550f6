#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "qel/inference/export.hpp"

namespace qel::inference {

/// How many bytes a file of labels may have.
inline constexpr std::size_t MaximumLabelsSize = std::size_t{1} << 20U;
inline constexpr std::size_t MaximumLabelSize = 256;  ///< how many one label

/// Reads a file of labels, the names of a network's classes: one a line, the first for output 0. Spaces around a label
/// do not count. Throws InferenceError, with the path, for a file that cannot be read or is too large, that holds no
/// label, and for a line that is empty, too long, not UTF-8 or holds control characters.
QEL_INFERENCE_EXPORT std::vector<std::string> LoadLabels(boost::filesystem::path const& path);

}  // namespace qel::inference
