// Every scan that the machine can run, against a walk over the pixels.
#include "concom/row_edges.hpp"

#include <random>
#include <vector>

#include <gtest/gtest.h>

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

class RowEdges : public testing::TestWithParam<NamedEdgeScan> {
protected:
    static Columns Scan(BitMask const& mask) {
        Columns edges(mask.GetSize().width + EdgeSlack);
        std::uint32_t const* const end = GetParam().scan(mask.GetData().data(), mask.GetSize().width, edges.data());
        edges.resize(static_cast<std::size_t>(end - edges.data()));
        return edges;
    }
};

TEST_P(RowEdges, GiveTheColumnsOfEveryWidth) {
    std::mt19937 random(81);
    for (unsigned int width = 0; width <= 1100; ++width) {
        for (unsigned int const percent : {0U, 1U, 50U, 97U, 100U}) {
            BitMask const mask = reference::Noise({width, 1}, percent, random);
            ASSERT_EQ(Scan(mask), WalkPixels(mask)) << width << ' ' << percent << " %";
        }
    }
}

TEST_P(RowEdges, GiveEveryColumnOfACheckeredRow) {
    for (unsigned int const width : {1U, 63U, 64U, 65U, 511U, 512U, 513U, 1024U}) {
        for (std::uint32_t const pattern : {0xAAAAAAAAU, 0x55555555U}) {
            BitMask mask({width, 1});
            for (std::uint32_t& word : mask.GetData()) word = pattern;
            ASSERT_EQ(Scan(mask), WalkPixels(mask)) << width;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnThisMachine, RowEdges,
                         testing::ValuesIn(GetSupportedEdgeScans().begin(), GetSupportedEdgeScans().end()),
                         [](auto const& scan) { return scan.param.name; });

TEST(EdgeScans, OfTheFastestKindAreChosen) {
    EXPECT_STREQ(GetSupportedEdgeScans().front().name, "plain");
    EXPECT_EQ(GetEdgeScan(), GetSupportedEdgeScans().back().scan);
}

}  // namespace
}  // namespace qel::algorithm::concom
