#pragma once

#include <cstddef>
#include <string>

#include <boost/filesystem/path.hpp>

#include "qel/system/descriptor.hpp"

namespace qel::inference {

/// Opens a file for reading, never to wait for anybody. Throws std::runtime_error with the reason when it cannot be
/// opened, is no regular file or has more bytes than that.
system::Descriptor OpenRegularFile(boost::filesystem::path const& path, std::size_t maximumSize);

/// The bytes of such a file. Throws the same, and std::runtime_error with the reason when it cannot be read.
std::string ReadRegularFile(boost::filesystem::path const& path, std::size_t maximumSize);

/// Throws std::runtime_error: a file has more bytes than that.
[[noreturn]] void RefuseSize(std::size_t maximumSize);

}  // namespace qel::inference
