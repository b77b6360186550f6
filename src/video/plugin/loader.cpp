#include "qel/algorithm/video/plugin/loader.hpp"

#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/load_all.hpp"

namespace qel::algorithm::video::plugin {

Loader::Loader() { system::plugin::LoadAll("qel_algorithm_", {system::GetLibraryPath("qel_algorithm").parent_path()}); }

}  // namespace qel::algorithm::video::plugin
