#pragma once

#include <utility>

#include <unistd.h>

namespace qel::system {

/// Owns a file descriptor and closes it at its end; -1 is none. Movable, not copyable; one thread at a time.
class Descriptor {
public:
    Descriptor() = default;
    /// Takes what open() and the like return, -1 included; errno stays as it is.
    explicit Descriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor() {
        if (descriptor_ >= 0) close(descriptor_);
    }

    int Get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// Closes it at once; false, with errno set, for none, and when what was written could not be stored. It owns none
    /// afterwards either way.
    bool Close() noexcept { return close(std::exchange(descriptor_, -1)) == 0; }

private:
    int descriptor_ = -1;
};

}  // namespace qel::system
