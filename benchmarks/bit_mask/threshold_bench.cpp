// Packing bytes above a threshold beside the obvious loop, a faster one that compares 8 bytes in a register, and
// OpenCV's threshold, which leaves a byte a pixel.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "bit_mask/benches.hpp"
#include "qel/algorithm/bit_mask/threshold.hpp"
#include "support/masks.hpp"
#include "support/peers.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;

void PackInAScalarLoop(cv::Mat const& image, int threshold, BitMask& mask) {
    for (int y = 0; y < image.rows; ++y) {
        unsigned char const* const row = image.ptr(y);
        std::uint32_t* const words = mask.GetData().data() + static_cast<std::size_t>(y) * mask.GetStride();
        for (int x = 0; x < image.cols; x += 32) {
            std::uint32_t word = 0;
            for (int i = 0; i < 32; ++i) word = word << 1 | (row[x + i] > threshold ? 1U : 0U);
            words[x / 32] = word;
        }
    }
}

/// Byte by byte more than threshold, in 64 bits: for a threshold of less than 128 the sum with 127 - threshold reaches
/// the highest bit, or the byte has it already. One multiplication gathers those bits, the first byte's on top.
void PackEightAtOnce(cv::Mat const& image, unsigned int threshold, BitMask& mask) {
    constexpr std::uint64_t Each = 0x0101010101010101ULL, Highest = 0x80 * Each;
    std::uint64_t const add = (127 - threshold) * Each;
    for (int y = 0; y < image.rows; ++y) {
        unsigned char const* const row = image.ptr(y);
        std::uint32_t* const words = mask.GetData().data() + static_cast<std::size_t>(y) * mask.GetStride();
        for (int x = 0; x < image.cols; x += 32) {
            std::uint32_t word = 0;
            for (int i = 0; i < 32; i += 8) {
                std::uint64_t pixels = 0;
                std::memcpy(&pixels, row + x + i, 8);
                std::uint64_t const above = (((pixels & ~Highest) + add) | pixels) & Highest;
                word = word << 8 | static_cast<std::uint32_t>((above >> 7) * 0x8040201008040201ULL >> 56);
            }
            words[x / 32] = word;
        }
    }
}

}  // namespace

void RegisterThreshold(Size size) {
    auto const image = std::make_shared<cv::Mat>(static_cast<int>(size.height), static_cast<int>(size.width), CV_8UC1);
    cv::randu(*image, 0, 256);
    auto const ours = [image, size](BitMask& mask) {
        algorithm::bit_mask::Threshold(image->data, image->step[0], size, 100, mask);
    };
    std::string const name = "Threshold/" + Name(size) + "/noise";
    BitMask mask(size), scalar(size);
    ours(mask);
    PackInAScalarLoop(*image, 100, scalar);
    Require(mask == scalar, name + ": scalar loop");
    PackEightAtOnce(*image, 100, scalar);
    Require(mask == scalar, name + ": scalar loop, eight at once");
    Require(Equal(mask, *image > 100), name + ": OpenCV");
    benchmark::RegisterBenchmark((name + "/qel").c_str(), [=](benchmark::State& state) {
        BitMask out(size);
        for (auto _ : state) ours(out);
    });
    benchmark::RegisterBenchmark((name + "/scalar").c_str(), [=](benchmark::State& state) {
        BitMask out(size);
        for (auto _ : state) {
            PackInAScalarLoop(*image, 100, out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark((name + "/eight-at-once").c_str(), [=](benchmark::State& state) {
        BitMask out(size);
        for (auto _ : state) {
            PackEightAtOnce(*image, 100, out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark((name + "/opencv").c_str(), [=](benchmark::State& state) {
        cv::Mat out;
        for (auto _ : state) cv::threshold(*image, out, 100, 255, cv::THRESH_BINARY);
    });
}

}  // namespace qel::benchmarks
