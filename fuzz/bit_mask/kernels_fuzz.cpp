// The word and lane loops of every instruction set that the machine has, against each other: the plain ones are what
// the tests compare with a walk over the pixels.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "bit_mask/lane_kernels.hpp"
#include "bit_mask/morphology.hpp"
#include "bit_mask/threshold_kernels.hpp"
#include "input.hpp"

namespace {

using namespace qel::algorithm::bit_mask;
using qel::algorithm::BitMask;
using qel::fuzz::Check;
using qel::fuzz::Input;

using Words = std::vector<std::uint32_t>;
using Lanes = std::vector<Lane>;

Words Read(Input& input, std::size_t count) { return input.Mask({static_cast<unsigned int>(32 * count), 1}).GetData(); }

void Morphology(Input& input) {
    std::size_t const words = input.Number(0, 70), rows = input.Number(0, 6), before = input.Number(0, 15);
    Words const src = Read(input, rows * words);
    Words first;
    for (RowKernels const& kernels : GetSupportedRowKernels()) {
        // The results begin at any place in a vector.
        Words dst(before + 2 * src.size() + 16, 0xABCDEF01U);
        Dilate(kernels, src.data(), dst.data() + before, rows, words);
        Erode(kernels, src.data(), dst.data() + before + src.size(), rows, words);
        if (first.empty()) first = dst;
        Check(dst == first, kernels.name);
    }
}

void Threshold(Input& input) {
    std::vector<std::uint8_t> pixels(input.Number(0, 300));
    std::uint8_t const threshold = input.Byte();
    for (std::uint8_t& pixel : pixels) pixel = input.Byte();
    Words first;
    for (NamedThresholdKernel const& kernel : GetSupportedThresholdKernels()) {
        Words words((pixels.size() + 31) / 32 + 1, 0xABCDEF01U);
        kernel.pack(pixels.data(), pixels.size(), threshold, words.data());
        if (first.empty()) first = words;
        Check(words == first, kernel.name);
    }
}

void Grow(Input& input) {
    std::size_t const words = input.Number(1, 70), lanes = (words + 1) / 2;
    std::size_t const pitch = (lanes + LaneGroup) / LaneGroup * LaneGroup;
    Words const src = Read(input, words), blocked = Read(input, words), beside = Read(input, words);
    Words first;
    for (LaneKernels const& kernels : GetSupportedLaneKernels()) {
        Lanes fillable(pitch), around(LaneGroup + pitch), region(pitch), scratch(2 * pitch);
        kernels.load(beside.data(), src.data(), words, around.data() + LaneGroup, region.data(), pitch);
        kernels.load(src.data(), blocked.data(), words, fillable.data(), region.data(), pitch);
        Lanes const empty(LaneGroup + pitch);
        std::size_t const changed = kernels.grow(around.data() + LaneGroup, empty.data() + LaneGroup, fillable.data(),
                                                 region.data(), scratch.data(), lanes);
        // The words as rows of four at most.
        std::size_t const width = std::min<std::size_t>(words, 4);
        std::size_t const repeated = kernels.countRepeated(src.data(), blocked.data(), width,
                                                           static_cast<std::ptrdiff_t>(width), words / width - 1);
        Words dst(blocked);
        kernels.store(region.data(), dst.data(), words);
        dst.push_back(static_cast<std::uint32_t>(changed));
        dst.push_back(static_cast<std::uint32_t>(repeated));
        if (first.empty()) first = dst;
        Check(dst == first, kernels.name);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input input(data, size);
    switch (input.Byte() % 3) {
        case 0:
            Morphology(input);
            break;
        case 1:
            Threshold(input);
            break;
        default:
            Grow(input);
            break;
    }
    return 0;
}
