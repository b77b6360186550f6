#pragma once

#include <filesystem>
#include <vector>

#include "support/masks.hpp"

namespace qel::benchmarks {

/// Writes a mask as a portable bitmap (binary PBM, "P4"). Throws std::runtime_error when that fails.
void WriteMask(algorithm::BitMask const& mask, std::filesystem::path const& file);

/// All the masks in *.pbm files of a folder, by name; none when there is no such folder.
/// Throws std::runtime_error for a file that WriteMask has not written.
std::vector<NamedMask> ReadMasks(std::filesystem::path const& folder);

}  // namespace qel::benchmarks
