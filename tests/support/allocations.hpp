#pragma once

#include <cstddef>

namespace qel::support {

/// The number of calls of operator new so far, in this thread. Link support/allocations.cpp into the program.
std::size_t CountAllocations();

/// The bytes asked for by them.
std::size_t CountAllocatedBytes();

/// The blocks of operator new that this thread has taken and not given back; other threads that give back its blocks
/// make it negative there.
std::ptrdiff_t CountLiveAllocations();

/// While it lives, operator new fails in this thread: after so many calls that still succeed, with std::bad_alloc.
class FailingAllocations {
public:
    enum class Mode {
        ForGood,  ///< every call after those fails
        Once,     ///< the next call fails, those after it succeed again
    };

    explicit FailingAllocations(std::size_t successes, Mode mode = Mode::ForGood);
    FailingAllocations(FailingAllocations const&) = delete;
    FailingAllocations& operator=(FailingAllocations const&) = delete;
    ~FailingAllocations();

    /// Whether a call has failed, in this thread, since the object was made.
    bool HaveFailed() const;
};

}  // namespace qel::support
