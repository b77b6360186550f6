#pragma once

#include <boost/filesystem/operations.hpp>

namespace qel::system {

/// The path with its directory made absolute and free of links; the last component stays as it is.
inline boost::filesystem::path MakeAbsolute(boost::filesystem::path const& path) {
    namespace fs = boost::filesystem;
    boost::system::error_code error;
    fs::path const directory = fs::canonical(fs::absolute(path).parent_path(), error);
    return error ? fs::absolute(path) : directory / path.filename();
}

}  // namespace qel::system
