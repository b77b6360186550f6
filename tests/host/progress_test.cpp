#include "progress.hpp"

#include <csignal>

#include <gtest/gtest.h>

#include "interrupt.hpp"

namespace qel::host {
namespace {

using namespace std::chrono_literals;

TEST(MakeProgressLine, ShowsABarRateAndTimeLeft) {
    EXPECT_EQ(MakeProgressLine(50, 200, 10s, 80),
              "[#######.......................]  50/200 frames  5 frames/s  0:30 left");
    EXPECT_EQ(MakeProgressLine(200, 200, 10s, 80),
              "[##############################]  200/200 frames  20 frames/s  0:00 left");
    EXPECT_EQ(MakeProgressLine(0, 10, 0s, 80), "[..............................]  0/10 frames  0 frames/s");
}

TEST(MakeProgressLine, LeavesOutWhatIsNotKnown) {
    EXPECT_EQ(MakeProgressLine(50, std::nullopt, 10s, 80), "50 frames  5 frames/s");
    EXPECT_EQ(MakeProgressLine(50, 0, 10s, 80), "50 frames  5 frames/s");
    EXPECT_EQ(MakeProgressLine(201, 200, 10s, 80), "201 frames  20 frames/s");
}

TEST(MakeProgressLine, NeverExceedsTheWidth) {
    EXPECT_EQ(MakeProgressLine(50, 200, 10s, 45), "[#....]  50/200 frames  5 frames/s  0:30 left");
    EXPECT_EQ(MakeProgressLine(50, 200, 10s, 44), "50/200 frames  5 frames/s  0:30 left");
    for (std::size_t width = 0; width < 90; ++width) {
        EXPECT_LE(MakeProgressLine(123456, 7891011, 999h, width).size(), width);
    }
}

TEST(Interrupt, NotesTheFirstSignalAndGivesWayToTheSecond) {
    {
        Interrupt const interrupt;
        EXPECT_EQ(interrupt.GetSignal(), 0);
        raise(SIGINT);
        EXPECT_EQ(interrupt.GetSignal(), SIGINT);
        struct sigaction action {};
        sigaction(SIGINT, nullptr, &action);
        EXPECT_EQ(action.sa_handler, SIG_DFL);
    }
    Interrupt const again;
    EXPECT_EQ(again.GetSignal(), 0);
    raise(SIGTERM);
    EXPECT_EQ(again.GetSignal(), SIGTERM);
}

}  // namespace
}  // namespace qel::host
