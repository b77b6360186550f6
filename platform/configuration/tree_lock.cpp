#include "tree_lock.hpp"

#include <mutex>

namespace qel::configuration::detail {

namespace {

std::mutex& Mutex() noexcept {
    // Never destroyed: trees in static objects may go after everything of this file.
    static auto* const mutex = new std::mutex;
    return *mutex;
}

}  // namespace

TreeLock::TreeLock() { Mutex().lock(); }

TreeLock::~TreeLock() { Mutex().unlock(); }

}  // namespace qel::configuration::detail
