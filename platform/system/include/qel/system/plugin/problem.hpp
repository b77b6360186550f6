#pragma once

#include <string>

#include <boost/filesystem/path.hpp>

namespace qel::system::plugin {

/// What went wrong with a plug-in.
struct Problem {
    boost::filesystem::path file;
    std::string reason;  ///< in plain words, to stand behind the file's path and a colon

    friend bool operator==(Problem const&, Problem const&) = default;
};

}  // namespace qel::system::plugin
