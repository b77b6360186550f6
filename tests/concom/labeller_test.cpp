// Every set of loops that the machine can run, in every manner of labelling, against the reference.
#include "concom/labeller.hpp"

#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "reference/connected_components.hpp"
#include "reference/pixels.hpp"
#include "reference/shapes.hpp"

namespace qel::algorithm::concom {
namespace {

using Blobs = std::vector<ConnectedComponents::Blob>;
using Manner = Labeller::Manner;

class EveryLabeller : public testing::TestWithParam<std::pair<Kernels, Manner>> {
protected:
    /// Labels the mask with the kept object both ways and compares with the reference.
    void Compare(BitMask const& mask) {
        unsigned int const min_area = random_() % 2 == 0 ? 0 : reference::Draw(random_, 1, 20);
        std::size_t count = labeller_.Connect(mask, true, min_area, blobs_);
        ASSERT_EQ(count, blobs_.size());
        ASSERT_EQ(blobs_, reference::PixelLabeller().Connect8Way(mask, min_area)) << "8-way, " << mask.GetSize();
        count = labeller_.Connect(mask, false, min_area, blobs_);
        ASSERT_EQ(count, blobs_.size());
        ASSERT_EQ(blobs_, reference::PixelLabeller().Connect4Way(mask, min_area)) << "4-way, " << mask.GetSize();
    }

    /// Rows from first on become those of another mask of the size.
    static void Replace(BitMask& mask, BitMask const& other, unsigned int first) {
        std::size_t const begin = first * mask.GetStride();
        for (std::size_t i = begin; i < mask.GetData().size(); ++i) mask.GetData()[i] = other.GetData()[i];
    }

    std::mt19937 random_{45};

private:
    Labeller labeller_{GetParam().first, GetParam().second};
    Blobs blobs_;
};

constexpr unsigned int Widths[] = {1, 2, 31, 32, 33, 63, 64, 65, 95, 97, 127, 128, 129, 200, 512, 513};

TEST_P(EveryLabeller, GivesTheReferenceOnNoiseOfEveryDensity) {
    for (unsigned int percent = 1; percent <= 99; ++percent) {
        unsigned int const width = Widths[percent % std::size(Widths)];
        BitMask const mask = reference::Noise({width, reference::Draw(random_, 1, 50)}, percent, random_);
        ASSERT_NO_FATAL_FAILURE(Compare(mask)) << percent << " %";
    }
}

TEST_P(EveryLabeller, GivesTheReferenceOnManySmallMasks) {
    for (int i = 0; i < 5000; ++i) {
        BitMask::Size const size{reference::Draw(random_, 1, 12), reference::Draw(random_, 1, 8)};
        ASSERT_NO_FATAL_FAILURE(Compare(reference::Noise(size, reference::Draw(random_, 20, 80), random_)));
    }
}

TEST_P(EveryLabeller, GivesTheReferenceOnCoarseNoise) {
    for (int i = 0; i < 200; ++i) {
        BitMask::Size const size{reference::Draw(random_, 1, 300), reference::Draw(random_, 1, 60)};
        unsigned int const grainX = reference::Draw(random_, 1, 9), grainY = reference::Draw(random_, 1, 5);
        BitMask const grains = reference::Noise(size, reference::Draw(random_, 10, 90), random_);
        BitMask const mask = reference::Draw(size, random_, [&](unsigned int x, unsigned int y) {
            return reference::Get(grains, x / grainX, y / grainY);
        });
        ASSERT_NO_FATAL_FAILURE(Compare(mask));
    }
}

TEST_P(EveryLabeller, GivesTheReferenceOnShapesWithAndWithoutNoise) {
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        for (unsigned int const width : Widths) {
            BitMask mask = shape.make({width, reference::Draw(random_, 1, 40)}, random_);
            ASSERT_NO_FATAL_FAILURE(Compare(mask));
            for (std::uint32_t& word : mask.GetData())
                word ^= static_cast<std::uint32_t>(random_() & random_() & random_() & random_());
            ASSERT_NO_FATAL_FAILURE(Compare(mask));
        }
    }
}

TEST_P(EveryLabeller, GivesTheReferenceWhereTheDensityChangesFromRowToRow) {
    // Wide enough for bulk to pay now and then.
    for (int i = 0; i < 40; ++i) {
        BitMask::Size const size{reference::Draw(random_, 200, 700), 120};
        BitMask mask = reference::Noise(size, reference::Draw(random_, 60, 99), random_);
        for (unsigned int y = reference::Draw(random_, 0, 40); y < size.height; y += reference::Draw(random_, 1, 40)) {
            Replace(mask, reference::Noise(size, reference::Draw(random_, 0, 99), random_), y);
        }
        ASSERT_NO_FATAL_FAILURE(Compare(mask));
    }
}

std::vector<std::pair<Kernels, Manner>> All() {
    std::vector<std::pair<Kernels, Manner>> all;
    for (Kernels const& kernels : GetSupportedKernels()) {
        for (Manner const manner : {Manner::Runs, Manner::Bulk, Manner::Adaptive}) all.emplace_back(kernels, manner);
    }
    return all;
}

std::string Name(testing::TestParamInfo<std::pair<Kernels, Manner>> const& test) {
    constexpr char const* Names[] = {"_runs", "_bulk", "_adaptive"};
    return test.param.first.name + std::string(Names[static_cast<int>(test.param.second)]);
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, EveryLabeller, testing::ValuesIn(All()), Name);

}  // namespace
}  // namespace qel::algorithm::concom
