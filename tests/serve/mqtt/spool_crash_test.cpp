// The process that fills a spool is killed at random moments; the next one finds everything that it was told.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "mqtt/spool.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

constexpr std::uint64_t MaxBytes = 4 << 20;

/// What the child says after each step: 'a' or 'c' (appended, completed) and the number, through a pipe.
struct Step {
    char what;
    std::uint64_t number;
};

/// Appends, takes and completes at random until it is killed.
[[noreturn]] void Work(std::string const& folder, std::uint32_t seed, int pipe) {
    Spool spool(folder, MaxBytes);
    std::mt19937 random(seed);
    auto const tell = [pipe](char what, std::uint64_t number) {
        Step const step{what, number};
        if (write(pipe, &step, sizeof(step)) != sizeof(step)) _exit(1);
    };
    std::uint64_t last = 0;
    for (;;) {
        switch (random() % 8) {
            case 0:
            case 1:
            case 2:
            case 3:
                spool.Append(std::string(random() % 300, 'x'));
                tell('a', 0);
                break;
            case 4:
            case 5:
            case 6:
                if (auto const record = spool.Take()) last = record->number;
                break;
            default:
                if (last != 0) spool.Complete(last);
                tell('c', last);
        }
        if (random() % 1000 == 0) spool.Sync();
    }
}

TEST(SpoolCrash, NothingThatWasStoredIsMissingAfterAKillAtAnyMoment) {
    test::TemporaryDirectory const folder;
    std::mt19937 random(7);
    std::uint64_t appended = 0;   // the child said so
    std::uint64_t completed = 0;  // the same
    for (std::uint32_t round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        pid_t const child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) Work(folder.GetPath().string(), round, ends[1]);
        close(ends[1]);
        std::uint64_t const steps = random() % 200;
        Step step{};
        auto const take = [&] {
            if (read(ends[0], &step, sizeof(step)) != sizeof(step)) return false;
            if (step.what == 'a') ++appended;
            if (step.what == 'c') completed = std::max(completed, step.number);
            return true;
        };
        for (std::uint64_t i = 0; i < steps; ++i) ASSERT_TRUE(take());
        kill(child, SIGKILL);
        while (take()) {}
        close(ends[0]);
        waitpid(child, nullptr, 0);

        Spool spool(folder.GetPath().string(), MaxBytes);
        auto const first = spool.Take();
        std::uint64_t end = first ? first->number : 0;
        if (first) {
            // A completion may have been stored and not been told any more.
            EXPECT_GT(first->number, completed);
            while (auto const record = spool.Take()) ASSERT_EQ(record->number, ++end);
            // So may one record.
            EXPECT_GE(end, appended);
            EXPECT_LE(end, appended + 1);
            appended = end;
        }
        EXPECT_EQ(spool.GetCounts().lost, 0U);
        if (!first) {
            spool.Append("the number that comes next");
            std::uint64_t const next = spool.Take()->number;
            EXPECT_GE(next, appended + 1);
            EXPECT_LE(next, appended + 2);
            appended = next;
        }
    }
    EXPECT_GT(appended, 500U);
    EXPECT_GT(completed, 100U);
}

}  // namespace
}  // namespace qel::serve::mqtt
