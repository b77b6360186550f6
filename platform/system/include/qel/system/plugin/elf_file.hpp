#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "qel/system/export.hpp"

namespace qel::system::plugin {

/// What the loader will need to know of a shared library, read without loading it.
struct ElfFile {
    std::string soname;               ///< the name under which programs link it; may be empty
    std::vector<std::string> needed;  ///< the sonames of the libraries it needs
};

/// Reads a shared library of this machine's kind.
/// Throws std::runtime_error with a reason in plain words when the file is none or is cut short: the loader would map
/// missing pages, and the process would die at the first touch. Any thread.
QEL_SYSTEM_EXPORT ElfFile ReadElfFile(boost::filesystem::path const& path);

}  // namespace qel::system::plugin
