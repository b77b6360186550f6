// Replaces operator new of the whole program, its shared libraries included, by one that counts and fails on demand.
#include "support/allocations.hpp"

#include <cstdlib>
#include <limits>
#include <new>

namespace qel::support {
namespace {

constexpr std::size_t Unlimited = std::numeric_limits<std::size_t>::max();

thread_local std::size_t calls = 0;
thread_local std::size_t bytes = 0;
thread_local std::ptrdiff_t live = 0;
thread_local std::size_t successesLeft = Unlimited;
thread_local bool onlyOnce = false;
thread_local bool haveFailed = false;

/// Null when the call is to fail.
void* TryAllocate(std::size_t size, std::size_t alignment) noexcept {
    if (successesLeft == 0) {
        haveFailed = true;
        if (onlyOnce) successesLeft = Unlimited;
        return nullptr;
    }
    if (successesLeft != Unlimited) --successesLeft;
    ++calls;
    bytes += size;
    std::size_t const rounded = (size + alignment - 1) / alignment * alignment;
    if (rounded < size) return nullptr;
    std::size_t const wanted = rounded != 0 ? rounded : alignment;
    void* const memory =
        alignment <= alignof(std::max_align_t) ? std::malloc(wanted) : std::aligned_alloc(alignment, wanted);
    if (memory != nullptr) ++live;
    return memory;
}

void* Allocate(std::size_t size, std::size_t alignment) {
    if (void* const memory = TryAllocate(size, alignment)) return memory;
    throw std::bad_alloc();
}

void Free(void* memory) noexcept {
    if (memory != nullptr) --live;
    std::free(memory);
}

}  // namespace

std::size_t CountAllocations() { return calls; }

std::size_t CountAllocatedBytes() { return bytes; }

std::ptrdiff_t CountLiveAllocations() { return live; }

FailingAllocations::FailingAllocations(std::size_t successes, Mode mode) {
    successesLeft = successes;
    onlyOnce = mode == Mode::Once;
    haveFailed = false;
}

FailingAllocations::~FailingAllocations() { successesLeft = Unlimited; }

bool FailingAllocations::HaveFailed() const { return haveFailed; }

}  // namespace qel::support

using qel::support::Allocate;
using qel::support::Free;
using qel::support::TryAllocate;

namespace {

constexpr std::size_t Usual = alignof(std::max_align_t);

std::size_t ToSize(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

void* operator new(std::size_t size) { return Allocate(size, Usual); }
void* operator new[](std::size_t size) { return Allocate(size, Usual); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return TryAllocate(size, Usual); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return TryAllocate(size, Usual); }
void* operator new(std::size_t size, std::align_val_t to) { return Allocate(size, ToSize(to)); }
void* operator new[](std::size_t size, std::align_val_t to) { return Allocate(size, ToSize(to)); }
void* operator new(std::size_t size, std::align_val_t to, std::nothrow_t const&) noexcept {
    return TryAllocate(size, ToSize(to));
}
void* operator new[](std::size_t size, std::align_val_t to, std::nothrow_t const&) noexcept {
    return TryAllocate(size, ToSize(to));
}
void operator delete(void* memory, std::nothrow_t const&) noexcept { Free(memory); }
void operator delete[](void* memory, std::nothrow_t const&) noexcept { Free(memory); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t, std::nothrow_t const&) noexcept { Free(memory); }
void operator delete[](void* memory, std::align_val_t, std::nothrow_t const&) noexcept { Free(memory); }
