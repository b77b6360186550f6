#include "tree_lock.hpp"

namespace qel::configuration::detail {

std::shared_mutex& TreeMutex() noexcept {
    // Never destroyed: trees in static objects may go after everything of this file.
    static auto* const mutex = new std::shared_mutex;
    return *mutex;
}

}  // namespace qel::configuration::detail
