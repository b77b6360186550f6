#include "tree_lock.hpp"

#include <mutex>
#include <type_traits>

namespace qel::configuration::detail {

namespace {

// Needs neither memory nor a destructor: trees in static objects may be made before and go after everything of this
// file.
constinit std::mutex Mutex;
static_assert(std::is_trivially_destructible_v<std::mutex>);

}  // namespace

TreeLock::TreeLock() { Mutex.lock(); }

TreeLock::~TreeLock() { Mutex.unlock(); }

}  // namespace qel::configuration::detail
