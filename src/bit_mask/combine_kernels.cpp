// One loop for all combinations, compiled for each instruction set: the compiler makes the vectors. What is written is
// aligned, for a line of the cache crossed costs as much as a fifth of the time. So the loops take what copying takes,
// and vectors wider still would gain nothing.
#include "bit_mask/combine_kernels.hpp"

#include <algorithm>
#include <array>

namespace qel::algorithm::bit_mask {
namespace {

struct Unite {
    std::uint32_t operator()(std::uint32_t a, std::uint32_t b) const { return a | b; }
};

struct Subtract {
    std::uint32_t operator()(std::uint32_t a, std::uint32_t b) const { return a & ~b; }
};

struct Intersect {
    std::uint32_t operator()(std::uint32_t a, std::uint32_t b) const { return a & b; }
};

template <class Operation>
[[gnu::always_inline]] inline void Combine(std::uint32_t* words, std::uint32_t const* others, std::size_t count) {
    constexpr std::size_t Line = 64;
    std::size_t const before = (Line - reinterpret_cast<std::uintptr_t>(words) % Line) % Line / sizeof(*words);
    std::size_t const head = std::min(before, count);
    for (std::size_t i = 0; i < head; ++i) words[i] = Operation()(words[i], others[i]);
    if (head == count) return;
    auto* const aligned = static_cast<std::uint32_t*>(__builtin_assume_aligned(words + head, Line));
    for (std::size_t i = 0; i < count - head; ++i) aligned[i] = Operation()(aligned[i], others[head + i]);
}

template <class Operation>
void Plain(std::uint32_t* words, std::uint32_t const* others, std::size_t count) {
    Combine<Operation>(words, others, count);
}

#if defined(__x86_64__)

template <class Operation>
[[gnu::target("avx2")]] void Avx2(std::uint32_t* words, std::uint32_t const* others, std::size_t count) {
    Combine<Operation>(words, others, count);
}

constexpr std::array Kernels{CombineKernels{"plain", Plain<Unite>, Plain<Subtract>, Plain<Intersect>},
                             CombineKernels{"avx2", Avx2<Unite>, Avx2<Subtract>, Avx2<Intersect>}};

std::size_t CountSupported() { return __builtin_cpu_supports("avx2") ? 2 : 1; }

#else

constexpr std::array Kernels{CombineKernels{"plain", Plain<Unite>, Plain<Subtract>, Plain<Intersect>}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<CombineKernels const> GetSupportedCombineKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

CombineKernels const& GetCombineKernels() { return GetSupportedCombineKernels().back(); }

}  // namespace qel::algorithm::bit_mask
