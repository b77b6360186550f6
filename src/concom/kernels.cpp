// One body for each loop, compiled for each instruction set.
#include "concom/kernels.hpp"

#include <array>

namespace qel::algorithm::concom {
namespace {

[[gnu::always_inline]] inline std::size_t SkipZeros(std::uint32_t const* words, std::size_t count) {
    constexpr std::size_t Block = 64;
    std::size_t i = 0;
    for (; i + Block <= count; i += Block) {
        std::uint32_t any = 0;
        for (std::size_t k = 0; k < Block; ++k) any |= words[i + k];
        if (any != 0) return i;
    }
    while (i < count && words[i] == 0) ++i;
    return i;
}

std::size_t SkipZerosPlain(std::uint32_t const* words, std::size_t count) { return SkipZeros(words, count); }

template <std::uint32_t CombineBlob>
[[gnu::noinline]] Segment* LabelJoiningRunPlain(MaskRows& rows, Segment const* next, std::uint32_t first,
                                                std::uint32_t end, std::uint32_t label, Segment* out) {
    return LabelJoiningRun<CombineBlob>(rows, next, first, end, label, out);
}

template <std::uint32_t CombineBlob>
void LabelRunsPlain(MaskRows& rows) {
    LabelRuns<CombineBlob, ScanEdgesPlain, ScanEdgesAndCountPlain, LabelJoiningRunPlain<CombineBlob>>(rows);
}

template <std::uint32_t CombineBlob>
void LabelBulkPlain(MaskRows& rows) {
    LabelBulk<CombineBlob>(rows);
}

constexpr Kernels Plain{"plain",
                        SkipZerosPlain,
                        ScanEdgesPlain,
                        ScanEdgesAndCountPlain,
                        LabelRunsPlain<CombineBlob4Way>,
                        LabelRunsPlain<CombineBlob8Way>,
                        LabelBulkPlain<CombineBlob4Way>,
                        LabelBulkPlain<CombineBlob8Way>};

#if defined(__x86_64__)

#define QEL_TARGET_AVX2 gnu::target("avx2,bmi,bmi2,lzcnt,popcnt")
#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,avx512vpopcntdq,bmi,bmi2,lzcnt,popcnt")

[[QEL_TARGET_AVX2]] std::size_t SkipZerosAvx2(std::uint32_t const* words, std::size_t count) {
    return SkipZeros(words, count);
}

[[QEL_TARGET_AVX512]] std::size_t SkipZerosAvx512(std::uint32_t const* words, std::size_t count) {
    return SkipZeros(words, count);
}

template <std::uint32_t CombineBlob>
[[gnu::noinline, QEL_TARGET_AVX2]] Segment* LabelJoiningRunAvx2(MaskRows& rows, Segment const* next,
                                                                std::uint32_t first, std::uint32_t end,
                                                                std::uint32_t label, Segment* out) {
    return LabelJoiningRun<CombineBlob>(rows, next, first, end, label, out);
}

template <std::uint32_t CombineBlob>
[[QEL_TARGET_AVX2]] void LabelRunsAvx2(MaskRows& rows) {
    LabelRuns<CombineBlob, ScanEdgesAvx2, ScanEdgesAndCountAvx2, LabelJoiningRunAvx2<CombineBlob>>(rows);
}

template <std::uint32_t CombineBlob>
[[gnu::noinline, QEL_TARGET_AVX512]] Segment* LabelJoiningRunAvx512(MaskRows& rows, Segment const* next,
                                                                    std::uint32_t first, std::uint32_t end,
                                                                    std::uint32_t label, Segment* out) {
    return LabelJoiningRun<CombineBlob>(rows, next, first, end, label, out);
}

template <std::uint32_t CombineBlob>
[[QEL_TARGET_AVX512]] void LabelRunsAvx512(MaskRows& rows) {
    LabelRuns<CombineBlob, ScanEdgesAvx512, ScanEdgesAndCountAvx512, LabelJoiningRunAvx512<CombineBlob>>(rows);
}

template <std::uint32_t CombineBlob>
[[QEL_TARGET_AVX2]] void LabelBulkAvx2(MaskRows& rows) {
    LabelBulk<CombineBlob>(rows);
}

template <std::uint32_t CombineBlob>
[[QEL_TARGET_AVX512]] void LabelBulkAvx512(MaskRows& rows) {
    LabelBulk<CombineBlob>(rows);
}

constexpr std::array All{
    Plain,
    Kernels{"avx2", SkipZerosAvx2, ScanEdgesAvx2, ScanEdgesAndCountAvx2, LabelRunsAvx2<CombineBlob4Way>,
            LabelRunsAvx2<CombineBlob8Way>, LabelBulkAvx2<CombineBlob4Way>, LabelBulkAvx2<CombineBlob8Way>},
    Kernels{"avx512", SkipZerosAvx512, ScanEdgesAvx512, ScanEdgesAndCountAvx512, LabelRunsAvx512<CombineBlob4Way>,
            LabelRunsAvx512<CombineBlob8Way>, LabelBulkAvx512<CombineBlob4Way>, LabelBulkAvx512<CombineBlob8Way>}};

std::size_t CountSupported() {
    bool const avx2 = (__builtin_cpu_supports("avx2") != 0) & (__builtin_cpu_supports("bmi") != 0) &
                      (__builtin_cpu_supports("bmi2") != 0) & (__builtin_cpu_supports("popcnt") != 0);
    bool const avx512 = avx2 & (__builtin_cpu_supports("avx512f") != 0) & (__builtin_cpu_supports("avx512bw") != 0) &
                        (__builtin_cpu_supports("avx512vl") != 0) & (__builtin_cpu_supports("avx512vbmi2") != 0) &
                        (__builtin_cpu_supports("avx512vpopcntdq") != 0) & (__builtin_cpu_supports("gfni") != 0);
    return 1U + static_cast<std::size_t>(avx2) + static_cast<std::size_t>(avx512);
}

#else

constexpr std::array All{Plain};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<Kernels const> GetSupportedKernels() {
    static std::size_t const Count = CountSupported();
    return {All.data(), Count};
}

Kernels const& GetKernels() { return GetSupportedKernels().back(); }

}  // namespace qel::algorithm::concom
