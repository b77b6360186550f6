#include "qel/type/binding.hpp"

#include <utility>

namespace qel::type {

Binding::Binding(std::function<void()> release) noexcept : release_(std::move(release)) {}

// std::function promises nothing about a moved-from source; swapping leaves it empty.
Binding::Binding(Binding&& other) noexcept { release_.swap(other.release_); }

Binding& Binding::operator=(Binding&& other) noexcept {
    Binding former(std::move(other));
    release_.swap(former.release_);
    return *this;
}

Binding::~Binding() { Release(); }

void Binding::Release() noexcept {
    // Taken out first: the release may drop this very binding again through its handler.
    std::function<void()> release;
    release.swap(release_);
    if (release) release();
}

}  // namespace qel::type
