#include "oom/sweep.hpp"

#include <exception>
#include <new>
#include <optional>

#include <gtest/gtest.h>

#include "support/allocations.hpp"

namespace qel::oom {
namespace {

using support::CountLiveAllocations;
using support::FailingAllocations;

/// What came out of an action.
enum class End { Done, OutOfMemory, Other };

End Run(Attempt& attempt) {
    try {
        attempt.Act();
        return End::Done;
    } catch (std::bad_alloc const&) {
        return End::OutOfMemory;
    } catch (std::exception const& error) {
        ADD_FAILURE() << "instead of std::bad_alloc: " << error.what();
        return End::Other;
    }
}

class Sweeper {
public:
    explicit Sweeper(Operation const& operation) : operation_(operation) {
        // Twice: tables and caches that live on are made on the way, and the last run shows the result.
        for (int i = 0; i < 2; ++i) {
            auto const attempt = operation_.make();
            EXPECT_EQ(Run(*attempt), End::Done);
            expected_ = attempt->Describe();
        }
    }

    std::size_t Sweep(FailingAllocations::Mode mode) {
        std::size_t point = 0;
        while (FailAt(point, mode) && !testing::Test::HasFailure()) ++point;
        return point;
    }

private:
    /// Whether there was an allocation to fail.
    bool FailAt(std::size_t point, FailingAllocations::Mode mode) {
        SCOPED_TRACE(operation_.name + ", allocation " + std::to_string(point) + " fails " +
                     (mode == FailingAllocations::Mode::Once ? "once" : "for good"));
        std::ptrdiff_t const before = CountLiveAllocations();
        bool const hasFailed = Try(point, mode);
        std::ptrdiff_t const left = CountLiveAllocations() - before;
        if (!operation_.startsThread) {
            EXPECT_EQ(left, 0) << "blocks are left";
        }
        return hasFailed;
    }

    bool Try(std::size_t point, FailingAllocations::Mode mode) {
        auto const attempt = operation_.make();
        std::string const untouched = attempt->Describe();
        std::optional<End> end;
        bool hasFailed = false;
        {
            FailingAllocations const failing(point, mode);
            end = Run(*attempt);
            hasFailed = failing.HaveFailed();
        }
        if (!hasFailed) {
            EXPECT_EQ(attempt->Describe(), expected_);
            return false;
        }
        Check(*attempt, *end, untouched);
        return true;
    }

    void Check(Attempt& attempt, End end, std::string const& untouched) {
        std::string const after = attempt.Describe();
        if (operation_.promise == Promise::Silent) {
            EXPECT_EQ(end, End::Done);
        } else if (operation_.promise == Promise::Stream) {
            EXPECT_EQ(end, End::Done);
            EXPECT_NE(after, expected_) << "the stream is good, but not all can have been written";
        } else if (end == End::Done) {
            // Some other way was found.
            EXPECT_EQ(after, expected_);
            return;
        } else if (operation_.promise == Promise::Strong) {
            EXPECT_EQ(after, untouched);
        }
        EXPECT_EQ(Run(attempt), End::Done) << "the operation cannot be repeated";
        EXPECT_EQ(attempt.Describe(), expected_) << "repeated";
    }

    Operation const& operation_;
    std::string expected_;
};

}  // namespace

Points Sweep(Operation const& operation) {
    Sweeper sweeper(operation);
    Points points;
    points.once = sweeper.Sweep(FailingAllocations::Mode::Once);
    points.forGood = sweeper.Sweep(FailingAllocations::Mode::ForGood);
    return points;
}

}  // namespace qel::oom
