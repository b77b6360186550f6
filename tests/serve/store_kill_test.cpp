// A program that changes a configuration is killed at many moments: the file must hold one of the states that it
// applied, whole.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <limits>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "document.hpp"
#include "read_json.hpp"
#include "support/process.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve {
namespace {

constexpr int Changes = 200;

/// A folder in memory where there is one: a kill loses nothing that was written, and syncing a disk takes its time.
std::filesystem::path FindQuickFolder() {
    std::filesystem::path const memory = "/dev/shm";
    return access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

class StoreKilled : public testing::Test {
protected:
    /// Has the program make changes until its log has so many lines and then some microseconds more; 0 lines: to the
    /// end of its changes.
    test::Outcome RunUntil(int seed, std::size_t lines, int microseconds) {
        int const changes = lines > 0 ? std::numeric_limits<int>::max() : Changes;
        test::Command command{.program = QEL_SETTINGS_CHANGER,
                              .arguments = {config_, log_, std::to_string(seed), std::to_string(changes)}};
        test::WriteFile(log_, "");
        if (lines > 0) {
            command.watch = [this, lines, microseconds](pid_t process, std::string const&) {
                std::string const text = test::ReadFile(log_);
                if (static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) < lines) return;
                std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
                kill(process, SIGKILL);
            };
        }
        return test::RunProcess(command);
    }

    /// The states of the log, the last one first; a line that was cut off is none.
    std::vector<std::string> ReadStates() {
        std::vector<std::string> states;
        std::string const text = test::ReadFile(log_);
        std::size_t start = 0;
        for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
            states.insert(states.begin(), std::string(ReadJson(text.substr(start, end - start)).as_string()));
        }
        return states;
    }

    test::TemporaryDirectory const directory_{FindQuickFolder()};
    std::string const config_ = directory_ / "config.json";
    std::string const log_ = directory_ / "log";
};

TEST_F(StoreKilled, LeavesOneWholeStateThatWasApplied) {
    std::mt19937 random(1);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        std::size_t const lines = 1 + random() % Changes;
        test::Outcome const outcome = RunUntil(round, lines, static_cast<int>(random() % 3000));
        ASSERT_EQ(outcome.exitCode, -SIGKILL) << outcome.error;
        std::vector<std::string> const states = ReadStates();
        ASSERT_GE(states.size(), lines);
        std::string const file = test::ReadFile(config_);
        EXPECT_NO_THROW(ParseDocument(file));
        // The last state that was told of, unless that change was not made any more.
        auto const end = states.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(states.size()));
        EXPECT_NE(std::find(states.begin(), end, file), end) << file;
        std::string const lastGood = test::ReadFile(config_ + ".last-good");
        EXPECT_NO_THROW(ParseDocument(lastGood));
        EXPECT_NE(std::find(states.begin(), states.end(), lastGood), states.end()) << lastGood;
    }
    EXPECT_EQ(RunUntil(100, 0, 0).exitCode, 0);
    EXPECT_EQ(ReadStates().size(), Changes + 1U);
    EXPECT_EQ(test::ReadFile(config_), ReadStates().front());
}

}  // namespace
}  // namespace qel::serve
