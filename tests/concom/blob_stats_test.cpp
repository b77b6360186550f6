#include "qel/algorithm/concom/blob_stats.hpp"

#include <ios>
#include <sstream>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace qel::algorithm::concom {
namespace {

static_assert(std::is_nothrow_move_constructible_v<BlobStats> && std::is_nothrow_swappable_v<BlobStats>);

std::string Text(BlobStats const& stats) {
    std::ostringstream stream;
    stream << stats;
    return stream.str();
}

TEST(BlobStats, StartsWithZeros) {
    EXPECT_EQ(Text(BlobStats()),
              R"({"parent":0, "min":0, "max":0, "width":0, "height":0, "min_bound":0, "max_bound":0, "area":0 })");
    EXPECT_EQ(BlobStats(), BlobStats(0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(BlobStats, TakesItsFieldsInOrder) {
    BlobStats const stats(1, 2, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(stats.parent, 1U);
    EXPECT_EQ(stats.min, 2U);
    EXPECT_EQ(stats.max, 3U);
    EXPECT_EQ(stats.width, 4U);
    EXPECT_EQ(stats.height, 5U);
    EXPECT_EQ(stats.min_bound, 6U);
    EXPECT_EQ(stats.max_bound, 7U);
    EXPECT_EQ(stats.area, 8U);
}

TEST(BlobStats, WritesABlankBeforeTheClosingBrace) {
    EXPECT_EQ(Text(BlobStats(0, 3, 9, 7, 2, 1, 4, 12)),
              R"({"parent":0, "min":3, "max":9, "width":7, "height":2, "min_bound":1, "max_bound":4, "area":12 })");
}

TEST(BlobStats, WritesNumbersWithTheFlagsOfTheStream) {
    std::ostringstream stream;
    stream << std::hex << BlobStats(10, 11, 12, 13, 14, 15, 16, 0xFFFFFFFFU);
    EXPECT_EQ(stream.str(), R"({"parent":a, "min":b, "max":c, "width":d, "height":e, "min_bound":f, "max_bound":10, )"
                            R"("area":ffffffff })");
}

TEST(BlobStats, SwapsAllEightFields) {
    BlobStats const first(1, 2, 3, 4, 5, 6, 7, 8), second(11, 12, 13, 14, 15, 16, 17, 18);
    BlobStats a(first), b(second);
    swap(a, b);
    EXPECT_EQ(a, second);
    EXPECT_EQ(b, first);
    swap(a, a);
    EXPECT_EQ(a, second);
}

TEST(BlobStats, LeavesZerosBehindWhenMoved) {
    BlobStats const original(1, 2, 3, 4, 5, 6, 7, 8);
    BlobStats source(original);
    BlobStats target(std::move(source));
    EXPECT_EQ(target, original);
    EXPECT_EQ(source, BlobStats());  // NOLINT(bugprone-use-after-move): zeros are what moving leaves
    source = std::move(target);
    EXPECT_EQ(source, original);
    EXPECT_EQ(target, BlobStats());  // NOLINT(bugprone-use-after-move)
}

TEST(BlobStats, AssignsCopiesItselfIncluded) {
    BlobStats const original(1, 2, 3, 4, 5, 6, 7, 8);
    BlobStats copy;
    copy = original;
    EXPECT_EQ(copy, original);
    BlobStats& same = copy;
    copy = same;
    EXPECT_EQ(copy, original);
}

}  // namespace
}  // namespace qel::algorithm::concom
