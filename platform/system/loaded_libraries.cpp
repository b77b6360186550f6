#include "loaded_libraries.hpp"

#include <link.h>

namespace qel::system {

std::vector<boost::filesystem::path> GetLoadedLibraries() {
    std::vector<boost::filesystem::path> libraries;
    auto const add = [](dl_phdr_info* info, std::size_t, void* data) {
        // The program itself comes without a name.
        if (*info->dlpi_name != '\0') {
            static_cast<std::vector<boost::filesystem::path>*>(data)->emplace_back(info->dlpi_name);
        }
        return 0;
    };
    dl_iterate_phdr(add, &libraries);
    return libraries;
}

}  // namespace qel::system
