#include "qel/algorithm/line_by_line_connected_components.hpp"

#include <new>
#include <random>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference/line_by_line.hpp"
#include "reference/pixels.hpp"
#include "reference/shapes.hpp"
#include "support/allocations.hpp"
#include "support/picture.hpp"

namespace qel::algorithm {
namespace {

using concom::BlobStats;
using Stats = std::vector<BlobStats>;

static_assert(!std::is_copy_constructible_v<LineByLineConnectedComponents>);
static_assert(!std::is_convertible_v<unsigned int, LineByLineConnectedComponents>);
static_assert(std::is_nothrow_move_constructible_v<LineByLineConnectedComponents>);
static_assert(std::is_nothrow_swappable_v<LineByLineConnectedComponents>);

/// What each row of the picture reports; the rows are what they are, an empty one at the end flushes.
std::vector<Stats> Label(std::vector<std::string_view> const& rows) {
    BitMask const mask = support::Picture(rows, true);
    LineByLineConnectedComponents labeller(mask.GetSize().width);
    std::vector<Stats> reports;
    for (std::size_t y = 0; y < rows.size(); ++y) {
        Stats finished(3);
        labeller.LineByLine8Way(mask.GetData().data() + y * mask.GetStride(), finished);
        reports.push_back(finished);
    }
    return reports;
}

TEST(LineByLine, ReportsRunsThatNothingContinues) {
    EXPECT_EQ(Label({"###..#", "......"}),
              (std::vector<Stats>{{}, {{1, 0, 2, 3, 1, 0, 2, 3}, {2, 5, 5, 1, 1, 5, 5, 1}}}));
}

TEST(LineByLine, ReportsABlobWithTheRowAfterItsLast) {
    EXPECT_EQ(Label({"#..", "#..", "...", "..."}), (std::vector<Stats>{{}, {}, {{1, 0, 0, 1, 2, 0, 0, 2}}, {}}));
}

TEST(LineByLine, JoinsDiagonalRuns) {
    EXPECT_EQ(Label({"##..", "..##", "...."}), (std::vector<Stats>{{}, {}, {{1, 2, 3, 2, 2, 0, 3, 4}}}));
    EXPECT_EQ(Label({"..##", "##..", "...."}), (std::vector<Stats>{{}, {}, {{1, 0, 1, 2, 2, 0, 3, 4}}}));
    EXPECT_EQ(Label({"#...", "..#.", "...."}),
              (std::vector<Stats>{{}, {{1, 0, 0, 1, 1, 0, 0, 1}}, {{1, 2, 2, 1, 1, 2, 2, 1}}}));
}

TEST(LineByLine, AddsTheAreasThatARunTouches) {
    EXPECT_EQ(Label({"##.##", "..#..", "....."}), (std::vector<Stats>{{}, {}, {{1, 2, 2, 2, 2, 0, 4, 5}}}));
}

TEST(LineByLine, KeepsTheLargerAreaWhereABlobHasSplit) {
    // Both arms inherit the 5 pixels above them: 6 and 7, of which the blob keeps the larger.
    EXPECT_EQ(Label({"#####", "#..##", "....."}), (std::vector<Stats>{{}, {}, {{1, 0, 4, 5, 2, 0, 4, 7}}}));
}

TEST(LineByLine, MeasuresTheWidthFromEndToEndOfTheRow) {
    EXPECT_EQ(Label({"#####", "#...#", "#....", "....."}),
              (std::vector<Stats>{{}, {}, {}, {{1, 0, 0, 5, 3, 0, 4, 7}}}));
}

TEST(LineByLine, JoinsBlobsThatOneRunTouchesFirst) {
    EXPECT_EQ(Label({"##...##", "#.###.#", "......."})[2], (Stats{{1, 0, 6, 7, 2, 0, 6, 7}}));
}

TEST(LineByLine, LeavesBlobsApartThatEarlierRunsOfTheRowRepresent) {
    // The last run of row 3 touches the dot below the arch and the arch; the runs before it represent both already.
    std::vector<Stats> const reports = Label({"#######",  //
                                              "#.....#",  //
                                              "#..#..#",  //
                                              "#.#.###",  //
                                              "......."});
    EXPECT_TRUE(reports[3].empty());
    EXPECT_EQ(reports[4], (Stats{{1, 0, 6, 7, 4, 0, 6, 13}, {2, 2, 2, 1, 2, 2, 3, 2}}));
}

TEST(LineByLine, TakesEveryOtherPixelOfAnOddWidth) {
    for (unsigned int const width : {1U, 3U, 33U, 65U, 131U}) {
        BitMask mask({width, 2});
        for (unsigned int x = 0; x < width; x += 2) reference::Set(mask, x, 0);
        LineByLineConnectedComponents labeller(width);
        Stats finished;
        labeller.LineByLine8Way(mask.GetData().data(), finished);
        EXPECT_TRUE(finished.empty());
        labeller.LineByLine8Way(mask.GetData().data() + mask.GetStride(), finished);
        EXPECT_EQ(finished.size(), (width + 1) / 2);
        EXPECT_EQ(finished.back(), BlobStats((width + 1) / 2, width - 1, width - 1, 1, 1, width - 1, width - 1, 1));
    }
}

TEST(LineByLine, CountsMoreRunsThanFitInto16Bits) {
    constexpr unsigned int Width = 140001;
    BitMask mask({Width, 1});
    for (unsigned int x = 0; x < Width; x += 2) reference::Set(mask, x, 0);
    BitMask const empty({Width, 1});
    LineByLineConnectedComponents labeller(Width);
    Stats finished;
    labeller.LineByLine8Way(mask.GetData().data(), finished);
    labeller.LineByLine8Way(mask.GetData().data(), finished);
    labeller.LineByLine8Way(empty.GetData().data(), finished);
    ASSERT_EQ(finished.size(), 70001U);
    EXPECT_EQ(finished.back(), BlobStats(70001, Width - 1, Width - 1, 1, 2, Width - 1, Width - 1, 2));
}

TEST(LineByLine, TakesRowsOfNoWidth) {
    LineByLineConnectedComponents labeller(0);
    Stats finished(2);
    labeller.LineByLine8Way(nullptr, finished);
    EXPECT_TRUE(finished.empty());
}

TEST(LineByLine, DoesNotReadPadding) {
    std::vector<std::uint32_t> const row{0, 0x7FFFFFFFU};
    LineByLineConnectedComponents labeller(33);
    Stats finished;
    labeller.LineByLine8Way(row.data(), finished);
    labeller.LineByLine8Way(row.data(), finished);
    EXPECT_TRUE(finished.empty());
}

void Compare(BitMask const& mask) {
    unsigned int const width = mask.GetSize().width;
    LineByLineConnectedComponents labeller(width);
    reference::LineLabeller model(width);
    std::vector<std::uint32_t> const empty(mask.GetStride());
    Stats finished;
    for (std::size_t y = 0; y <= mask.GetSize().height; ++y) {
        std::uint32_t const* const row =
            y < mask.GetSize().height ? mask.GetData().data() + y * mask.GetStride() : empty.data();
        labeller.LineByLine8Way(row, finished);
        ASSERT_EQ(finished, model.LineByLine8Way(row)) << mask.GetSize() << ", row " << y;
    }
}

TEST(LineByLine, GivesTheReferenceOnNoise) {
    std::mt19937 random(71);
    for (int i = 0; i < 8000; ++i) {
        BitMask::Size const size{reference::Draw(random, 1, 140), reference::Draw(random, 1, 40)};
        ASSERT_NO_FATAL_FAILURE(Compare(reference::Noise(size, reference::Draw(random, 1, 99), random)));
    }
}

TEST(LineByLine, GivesTheReferenceOnShapes) {
    std::mt19937 random(72);
    for (reference::Shape const& shape : reference::Shapes()) {
        SCOPED_TRACE(shape.name);
        for (int i = 0; i < 80; ++i) {
            BitMask::Size const size{reference::Draw(random, 1, 200), reference::Draw(random, 1, 40)};
            BitMask mask = shape.make(size, random);
            if (i % 2 == 0) {
                for (auto& word : mask.GetData()) word ^= static_cast<std::uint32_t>(random() & random() & random());
            }
            ASSERT_NO_FATAL_FAILURE(Compare(mask));
        }
    }
}

TEST(LineByLine, AllocatesNothingRowAfterRow) {
    std::mt19937 random(73);
    BitMask const mask = reference::Noise({500, 200}, 30, random);
    LineByLineConnectedComponents labeller(500);
    Stats finished;
    finished.reserve(251);
    std::size_t const before = support::CountAllocations();
    for (std::size_t y = 0; y < 200; ++y) {
        labeller.LineByLine8Way(mask.GetData().data() + y * mask.GetStride(), finished);
    }
    EXPECT_EQ(support::CountAllocations(), before);
}

TEST(LineByLine, TakesTheRowAgainAfterAnAllocationFailed) {
    BitMask const mask = support::Picture({"#.#.#", "....."});
    LineByLineConnectedComponents labeller(5);
    Stats finished;
    labeller.LineByLine8Way(mask.GetData().data(), finished);
    {
        support::FailingAllocations const failing(0);
        EXPECT_THROW(labeller.LineByLine8Way(mask.GetData().data() + 1, finished), std::bad_alloc);
    }
    labeller.LineByLine8Way(mask.GetData().data() + 1, finished);
    EXPECT_EQ(finished.size(), 3U);
}

TEST(LineByLine, LeaksNothingWhenItsConstructorFails) {
    std::size_t failures = 0;
    for (bool done = false; !done; ++failures) {
        try {
            support::FailingAllocations const failing(failures);
            LineByLineConnectedComponents const labeller(100);
            done = true;
        } catch (std::bad_alloc const&) {}
    }
    EXPECT_GT(failures, 4U);
}

TEST(LineByLine, MovesAndSwapsTheStream) {
    BitMask const mask = support::Picture({"##.", "..."});
    std::uint32_t const* const set = mask.GetData().data();
    std::uint32_t const* const clear = set + 1;
    Stats finished;
    LineByLineConnectedComponents a(3);
    a.LineByLine8Way(set, finished);
    LineByLineConnectedComponents b(std::move(a));
    // NOLINTBEGIN(bugprone-use-after-move): what an object that was moved from does is the point
    EXPECT_THAT([&] { a.LineByLine8Way(set, finished); }, testing::ThrowsMessage<std::logic_error>("Pimpl is null"));
    b.LineByLine8Way(clear, finished);
    EXPECT_EQ(finished.size(), 1U);
    a = LineByLineConnectedComponents(3);
    a.LineByLine8Way(set, finished);
    algorithm::swap(a, b);
    a.LineByLine8Way(clear, finished);
    EXPECT_TRUE(finished.empty());
    a = std::move(b);
    EXPECT_THROW(b.LineByLine8Way(clear, finished), std::logic_error);
    LineByLineConnectedComponents& same = a;
    a = std::move(same);
    a.LineByLine8Way(clear, finished);
    EXPECT_EQ(finished.size(), 1U);
    // NOLINTEND(bugprone-use-after-move)
}

}  // namespace
}  // namespace qel::algorithm
