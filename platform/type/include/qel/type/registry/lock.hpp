#pragma once

#include <functional>
#include <utility>

namespace qel::type::registry {

/// Access to a locked map, for as long as the lock object lives.
///
/// Map: the type of the map, which is reached as through a pointer and cannot be changed. The destructor runs the
/// unlock action once, if any; one that throws ends the process. Movable with its action. One thread at a time.
template <class Map>
class [[nodiscard]] Lock {
public:
    Lock(Map const& map, std::function<void()> unlock) : map_(&map), unlock_(std::move(unlock)) {}
    Lock(Lock&& other) noexcept : map_(other.map_) { unlock_.swap(other.unlock_); }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;
    Lock& operator=(Lock&&) = delete;
    ~Lock() {
        std::function<void()> unlock;
        unlock.swap(unlock_);
        if (unlock) unlock();
    }

    Map const& operator*() const noexcept { return *map_; }
    Map const* operator->() const noexcept { return map_; }

private:
    Map const* map_;
    std::function<void()> unlock_;
};

}  // namespace qel::type::registry
