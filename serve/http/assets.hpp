#pragma once

#include <string>
#include <string_view>

#include <boost/filesystem/path.hpp>

#include "http/request.hpp"
#include "http/response.hpp"
#include "qel/system/descriptor.hpp"

namespace qel::serve::http {

/// The media type of a file by the end of its name; "application/octet-stream" for one that is not known.
std::string GetMediaType(std::string_view file);

/// Serves the files of a folder, and nothing outside: no "..", no hidden file, and no symbolic link is followed below
/// it.
class Assets {
public:
    /// An empty path: there are none, and each request is told so. Throws host::UsageError when it is no folder.
    explicit Assets(boost::filesystem::path const& folder);

    /// The file at a path, "index.html" for "". Files below assets/ bear a hash of what they hold in their names and
    /// may be kept; the others are asked for anew, which answers 304 while they are the same. Throws Problem 404.
    Response Get(Request const& request, std::string const& path) const;

private:
    system::Descriptor folder_;
};

/// Where the page lies unless a person says otherwise: the first folder share/qel/page beside one of the three folders
/// above the loaded libqel_algorithm.so; an empty path when there is none.
boost::filesystem::path FindPage();

}  // namespace qel::serve::http
