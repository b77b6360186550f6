#pragma once

#include <cstddef>

namespace qel::support {

/// The number of calls of operator new so far, in this thread. Link support/allocations.cpp into the program.
std::size_t CountAllocations();

/// The bytes asked for by them.
std::size_t CountAllocatedBytes();

/// While it lives, operator new fails in this thread: after so many calls that still succeed, with std::bad_alloc.
class FailingAllocations {
public:
    explicit FailingAllocations(std::size_t successes);
    FailingAllocations(FailingAllocations const&) = delete;
    FailingAllocations& operator=(FailingAllocations const&) = delete;
    ~FailingAllocations();
};

}  // namespace qel::support
