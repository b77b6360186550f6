// Replaces operator new of the whole program, its shared libraries included, by one that counts and fails on demand.
#include "support/allocations.hpp"

#include <cstdlib>
#include <limits>
#include <new>

namespace qel::support {
namespace {

thread_local std::size_t calls = 0;
thread_local std::size_t bytes = 0;
thread_local std::size_t successesLeft = std::numeric_limits<std::size_t>::max();

void* Allocate(std::size_t size) {
    if (successesLeft == 0) throw std::bad_alloc();
    if (successesLeft != std::numeric_limits<std::size_t>::max()) --successesLeft;
    ++calls;
    bytes += size;
    if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

}  // namespace

std::size_t CountAllocations() { return calls; }

std::size_t CountAllocatedBytes() { return bytes; }

FailingAllocations::FailingAllocations(std::size_t successes) { successesLeft = successes; }

FailingAllocations::~FailingAllocations() { successesLeft = std::numeric_limits<std::size_t>::max(); }

}  // namespace qel::support

void* operator new(std::size_t size) { return qel::support::Allocate(size); }
void* operator new[](std::size_t size) { return qel::support::Allocate(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    try {
        return qel::support::Allocate(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, std::nothrow_t const& nothrow) noexcept { return operator new(size, nothrow); }
void operator delete(void* memory, std::nothrow_t const&) noexcept { std::free(memory); }
void operator delete[](void* memory, std::nothrow_t const&) noexcept { std::free(memory); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
