#include "qel/algorithm/video/plugin/loader.hpp"

#include <boost/filesystem/operations.hpp>

#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/load_all.hpp"

namespace qel::algorithm::video::plugin {
namespace {

/// The directory that holds this library: a link that somebody made to it elsewhere has no plug-ins beside it.
boost::filesystem::path GetDirectory() {
    boost::filesystem::path const library = system::GetLibraryPath("qel_algorithm");
    boost::system::error_code error;
    boost::filesystem::path const file = boost::filesystem::canonical(library, error);
    return (error ? library : file).parent_path();
}

}  // namespace

Loader::Loader() { system::plugin::LoadAll("qel_algorithm_", {GetDirectory()}); }

}  // namespace qel::algorithm::video::plugin
