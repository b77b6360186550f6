#pragma once

namespace qel::configuration::detail {

/// Holds the one lock of all trees of the process while it lives; not recursive.
///
/// It is held for moments, for steps within the trees alone: never while handlers, predicates or JSON archives run, and
/// never while nodes are destroyed. One lock for all keeps moving a subtree into a tree, walking up a path and a batch
/// of changes simple, and no order of locks has to be kept.
class TreeLock {
public:
    TreeLock();
    TreeLock(TreeLock const&) = delete;
    TreeLock& operator=(TreeLock const&) = delete;
    ~TreeLock();
};

}  // namespace qel::configuration::detail
