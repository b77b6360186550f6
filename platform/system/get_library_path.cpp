#include "qel/system/get_library_path.hpp"

#include <stdexcept>

#include "absolute_path.hpp"
#include "loaded_libraries.hpp"

namespace qel::system {

boost::filesystem::path GetLibraryPath(std::string const& name) {
    std::string const fileName = "lib" + name + ".so";
    for (boost::filesystem::path const& library : GetLoadedLibraries()) {
        std::string const loaded = library.filename().string();
        if (loaded == fileName || loaded.starts_with(fileName + ".")) return MakeAbsolute(library);
    }
    throw std::runtime_error("The library " + fileName +
                             " is not loaded in this process: it may be missing, renamed or linked statically");
}

}  // namespace qel::system
