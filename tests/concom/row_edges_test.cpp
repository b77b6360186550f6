// Every row scan that the machine can run, against a walk over the pixels.
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "concom/kernels.hpp"
#include "reference/pixels.hpp"

namespace qel::algorithm::concom {
namespace {

using Columns = std::vector<std::uint32_t>;

Columns WalkPixels(BitMask const& mask) {
    Columns edges;
    bool inside = false;
    for (unsigned int x = 0; x < mask.GetSize().width; ++x) {
        if (reference::Get(mask, x, 0) != inside) edges.push_back(x);
        inside = reference::Get(mask, x, 0);
    }
    if (inside) edges.push_back(mask.GetSize().width);
    return edges;
}

using Lanes = std::vector<Lane>;

bool Get(Lanes const& lanes, unsigned int x) { return (lanes[x / 64] & ColumnBit(x)) != 0; }

struct Scanned {
    Columns edges;
    Lanes ends;
    Columns ranks;
};

/// Scans the mask's only row below one that has ends at the columns of above.
Scanned RunScan(EdgeScan scan, BitMask const& mask, Lanes above) {
    unsigned int const width = mask.GetSize().width;
    std::size_t const lanes = CountLanes(width) + LaneSlack;
    Scanned row{Columns(width + EdgeSlack), Lanes(lanes, 7), Columns(lanes, 7)};
    above.resize(lanes);
    std::uint32_t const* const end =
        scan(mask.GetData().data(), width, {row.edges.data(), row.ends.data(), above.data(), row.ranks.data()});
    row.edges.resize(static_cast<std::size_t>(end - row.edges.data()));
    return row;
}

class RowEdges : public testing::TestWithParam<Kernels> {
protected:
    /// With ranks and without, which gives the same edges and ends.
    static Scanned Scan(BitMask const& mask, Lanes const& above = {}) {
        Scanned row = RunScan(GetParam().scanEdgesAndCount, mask, above);
        Scanned const uncounted = RunScan(GetParam().scanEdges, mask, above);
        EXPECT_EQ(uncounted.edges, row.edges);
        EXPECT_EQ(uncounted.ends, row.ends);
        EXPECT_EQ(uncounted.ranks, Columns(row.ranks.size(), 7));
        return row;
    }
};

TEST_P(RowEdges, GiveTheColumnsOfEveryWidth) {
    std::mt19937 random(81);
    for (unsigned int width = 0; width <= 1100; ++width) {
        for (unsigned int const percent : {0U, 1U, 50U, 97U, 100U}) {
            BitMask const mask = reference::Noise({width, 1}, percent, random);
            ASSERT_EQ(Scan(mask).edges, WalkPixels(mask)) << width << ' ' << percent << " %";
        }
    }
}

TEST_P(RowEdges, GiveEveryColumnOfACheckeredRow) {
    for (unsigned int const width : {1U, 63U, 64U, 65U, 511U, 512U, 513U, 1024U}) {
        for (std::uint32_t const pattern : {0xAAAAAAAAU, 0x55555555U}) {
            BitMask mask({width, 1});
            for (std::uint32_t& word : mask.GetData()) word = pattern;
            ASSERT_EQ(Scan(mask).edges, WalkPixels(mask)) << width;
        }
    }
}

TEST_P(RowEdges, MarkWhereRunsEnd) {
    std::mt19937 random(82);
    for (unsigned int width = 1; width <= 1100; ++width) {
        BitMask const mask = reference::Noise({width, 1}, 50, random);
        Lanes const ends = Scan(mask).ends;
        for (unsigned int x = 0; x < width; ++x) {
            bool const isEnd = x != 0 && reference::Get(mask, x - 1, 0) && !reference::Get(mask, x, 0);
            ASSERT_EQ(Get(ends, x), isEnd) << width << ' ' << x;
        }
    }
}

TEST_P(RowEdges, CountWhatEndsAboveInTheLanesBeforeEachRun) {
    std::mt19937 random(83);
    for (unsigned int width = 1; width <= 2300; width += 7) {
        for (unsigned int const percent : {1U, 50U}) {
            BitMask const mask = reference::Noise({width, 1}, percent, random);
            Lanes above(CountLanes(width));
            for (Lane& lane : above) lane = Lane{random()} << 32U | random();
            Scanned const row = Scan(mask, above);
            for (std::uint32_t const edge : row.edges) {
                if (edge == width || !reference::Get(mask, edge, 0)) continue;
                std::uint32_t rank = 0;
                for (unsigned int x = 0; x < edge / 64 * 64; ++x) rank += Get(above, x) ? 1 : 0;
                ASSERT_EQ(row.ranks[edge / 64], rank) << width << ' ' << edge;
            }
        }
    }
}

TEST_P(RowEdges, CountTheZeroWordsInFront) {
    for (std::size_t const count : {0U, 1U, 5U, 63U, 64U, 65U, 200U}) {
        for (std::size_t first = 0; first <= count; ++first) {
            std::vector<std::uint32_t> words(count + 1);
            words[first] = 1;
            std::size_t const zeros = GetParam().skipZeros(words.data(), count);
            ASSERT_LE(zeros, first) << count;
            ASSERT_GT(zeros + 64, first) << count;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, RowEdges,
                         testing::ValuesIn(GetSupportedKernels().begin(), GetSupportedKernels().end()),
                         [](auto const& kernels) { return kernels.param.name; });

TEST(Kernels, OfTheFastestKindAreChosen) {
    EXPECT_STREQ(GetSupportedKernels().front().name, "plain");
    EXPECT_EQ(&GetKernels(), &GetSupportedKernels().back());
}

}  // namespace
}  // namespace qel::algorithm::concom
