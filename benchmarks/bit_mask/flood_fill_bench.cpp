// The flood fill beside OpenCV (a byte a pixel; the fill value alternates, so nothing has to be restored) and both of
// Leptonica's fills. Filled is the largest blob; ours and Leptonica's stack fill clear or restore its box each time.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "bit_mask/benches.hpp"
#include "qel/algorithm/bit_mask/flood_fill.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "support/masks.hpp"
#include "support/peers.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;
using algorithm::ConnectedComponents;

/// One mask and its largest blob in the formats of all contestants.
struct Input {
    BitMask mask;
    ConnectedComponents::Blob blob;
    PixPtr pix, seed;
    cv::Mat image;
};

ConnectedComponents::Blob Largest(BitMask const& mask) {
    std::vector<ConnectedComponents::Blob> blobs;
    ConnectedComponents().Connect8Way(mask, 0, blobs);
    return *std::max_element(blobs.begin(), blobs.end(), [](auto const& a, auto const& b) { return a.area < b.area; });
}

void ClearBox(BitMask& mask, ConnectedComponents::Blob const& blob) {
    auto const row = [&](std::size_t y) {
        return mask.GetData().begin() + static_cast<std::ptrdiff_t>(y * mask.GetStride());
    };
    std::fill(row(blob.minY), row(blob.maxY + 1), 0U);
}

BitMask Ours(Input const& input) {
    BitMask filled;
    algorithm::bit_mask::FloodFill8Way(input.mask, filled, {input.blob.firstX, input.blob.firstY}, 1);
    return filled;
}

void FillOpenCv(Input const& input, cv::Mat& image, int value) {
    cv::floodFill(image, {static_cast<int>(input.blob.firstX), static_cast<int>(input.blob.firstY)}, value, nullptr, {},
                  {}, 8);
}

/// Empties the largest blob.
void FillLeptonica(Input const& input, Pix* pix, L_Stack* stack) {
    pixSeedfill(pix, stack, static_cast<int>(input.blob.firstX), static_cast<int>(input.blob.firstY), 8);
}

void CheckPeers(Input const& input, std::string const& name) {
    BitMask const filled = Ours(input);
    cv::Mat image = input.image.clone();
    FillOpenCv(input, image, 100);
    Require(Equal(filled, image == 100), name + ": OpenCV");
    PixPtr const rest(pixCopy(nullptr, input.pix.get()));
    L_Stack* stack = lstackCreate(1000);
    FillLeptonica(input, rest.get(), stack);
    lstackDestroy(&stack, 1);
    BitMask expected(input.mask);
    expected.Difference(filled);
    Require(Equal(expected, rest.get()), name + ": Leptonica, stack");
}

/// How often Leptonica's binary fill has to be called, each time with what it has filled before: it gives up after 40
/// sweeps. None where many calls are not enough, in regions that wind for seconds.
int CountLeptonicaCalls(Input const& input) {
    BitMask const filled = Ours(input);
    PixPtr const region(pixCopy(nullptr, input.seed.get()));
    for (int calls = 1; calls <= 8; ++calls) {
        pixSeedfillBinary(region.get(), region.get(), input.pix.get(), 8);
        if (Equal(filled, region.get())) return calls;
    }
    return 0;
}

void Register(std::shared_ptr<Input> const& input, std::string const& name) {
    benchmark::RegisterBenchmark((name + "/qel").c_str(), [=](benchmark::State& state) {
        BitMask filled = Ours(*input);
        for (auto _ : state) {
            ClearBox(filled, input->blob);
            algorithm::bit_mask::FloodFill8Way(input->mask, filled, {input->blob.firstX, input->blob.firstY}, 1);
        }
    });
    benchmark::RegisterBenchmark((name + "/opencv").c_str(), [=](benchmark::State& state) {
        cv::Mat image = input->image.clone();
        int value = 100;
        for (auto _ : state) FillOpenCv(*input, image, value = 101 - value);
    });
    if (int const calls = CountLeptonicaCalls(*input); calls != 0) {
        benchmark::RegisterBenchmark((name + "/leptonica-binary").c_str(), [=](benchmark::State& state) {
            PixPtr const region(pixCopy(nullptr, input->seed.get()));
            for (auto _ : state) {
                pixSeedfillBinary(region.get(), input->seed.get(), input->pix.get(), 8);
                for (int i = 1; i < calls; ++i) pixSeedfillBinary(region.get(), region.get(), input->pix.get(), 8);
            }
        });
    }
    benchmark::RegisterBenchmark((name + "/leptonica-stack").c_str(), [=](benchmark::State& state) {
        PixPtr const rest(pixCopy(nullptr, input->pix.get()));
        L_Stack* stack = lstackCreate(1000);
        auto const& b = input->blob;
        for (auto _ : state) {
            FillLeptonica(*input, rest.get(), stack);
            pixRasterop(rest.get(), static_cast<int>(b.minX), static_cast<int>(b.minY),
                        static_cast<int>(b.maxX - b.minX + 1), static_cast<int>(b.maxY - b.minY + 1), PIX_SRC,
                        input->pix.get(), static_cast<int>(b.minX), static_cast<int>(b.minY));
        }
        lstackDestroy(&stack, 1);
    });
}

}  // namespace

void RegisterFloodFill(Size size) {
    for (NamedMask const& named : Masks(size)) {
        if (named.name == "empty" || named.name == "noise-10" || named.name == "noise-30") continue;
        BitMask mask = named.mask;
        if (named.name == "text") {
            BitMask const text = mask;
            mask.Fill(1);
            mask.Difference(text);
        }
        std::string const name =
            "FloodFill8Way/" + Name(size) + "/" + (named.name == "text" ? "inverted-text" : named.name);
        ConnectedComponents::Blob const blob = Largest(mask);
        BitMask seed(size);
        seed.GetData()[blob.firstY * seed.GetStride() + blob.firstX / 32] = 0x80000000U >> blob.firstX % 32;
        auto const input = std::make_shared<Input>(Input{mask, blob, ToPix(mask), ToPix(seed), ToMat(mask)});
        CheckPeers(*input, name);
        Register(input, name);
    }
}

}  // namespace qel::benchmarks
