#pragma once

#include <mutex>
#include <shared_mutex>

namespace qel::configuration::detail {

/// The one lock of all trees of the process.
///
/// It is held for moments, for steps within the trees alone: never while handlers, predicates or JSON archives run, and
/// never while nodes are destroyed. One lock for all keeps moving a subtree into a tree, walking up a path and a batch
/// of changes simple, and no order of locks has to be kept.
std::shared_mutex& TreeMutex() noexcept;

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

}  // namespace qel::configuration::detail
