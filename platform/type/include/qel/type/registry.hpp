#pragma once

#include <mutex>
#include <unordered_map>
#include <utility>

#include "qel/hash/murmur_three_32.hpp"
#include "qel/type/registry/lock.hpp"

namespace qel::type {

/// A map from the identifier of a type name to an entry of type T, shared by a whole process.
///
/// Any thread may read and register; the one mutex is held for the life of each lock that GetMap returns and is not
/// recursive: a thread that holds a lock must not call GetMap or Register.
template <class T>
class Registry {
public:
    using Map = std::unordered_map<hash::MurmurThree32, T>;

    Registry() = default;
    virtual ~Registry() = default;
    Registry(Registry const&) = delete;
    Registry& operator=(Registry const&) = delete;

    /// Locks the registry and returns a view of its map; throws std::system_error when the mutex cannot be locked.
    registry::Lock<Map> GetMap() const {
        std::unique_lock<std::mutex> lock(mutex_);
        registry::Lock<Map> result(map_, [this] { mutex_.unlock(); });
        lock.release();
        return result;
    }

    /// Enters an entry; returns false, and keeps the entry that is there, when the identifier is taken.
    bool Register(hash::MurmurThree32 id, T entry) {
        std::lock_guard<std::mutex> const lock(mutex_);
        return map_.try_emplace(id, std::move(entry)).second;
    }

private:
    Map map_;
    mutable std::mutex mutex_;
};

}  // namespace qel::type
