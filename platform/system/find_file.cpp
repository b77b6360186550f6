#include "qel/system/plugin/find_file.hpp"

#include <boost/filesystem/operations.hpp>
#include <dlfcn.h>
#include <link.h>

#include "absolute_path.hpp"

namespace qel::system::plugin {

boost::filesystem::path FindFile(void const* address) {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr) return {};
    // The loader knows the program by the text of the command line only.
    if (*map->l_name == '\0') return boost::filesystem::read_symlink("/proc/self/exe");
    return MakeAbsolute(map->l_name);
}

}  // namespace qel::system::plugin
