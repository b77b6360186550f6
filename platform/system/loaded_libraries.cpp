#include "loaded_libraries.hpp"

#include <exception>
#include <utility>

#include <link.h>

namespace qel::system {

namespace {

struct List {
    std::vector<boost::filesystem::path> libraries{};
    std::exception_ptr error{};
};

int Add(dl_phdr_info* info, std::size_t, void* data) noexcept {
    List& list = *static_cast<List*>(data);
    try {
        // The program itself comes without a name.
        if (*info->dlpi_name != '\0') list.libraries.emplace_back(info->dlpi_name);
        return 0;
    } catch (...) {
        list.error = std::current_exception();
        return 1;
    }
}

}  // namespace

std::vector<boost::filesystem::path> GetLoadedLibraries() {
    List list;
    // No exception goes through the loader, which holds a lock meanwhile.
    dl_iterate_phdr(Add, &list);
    if (list.error) std::rethrow_exception(list.error);
    return std::move(list.libraries);
}

}  // namespace qel::system
