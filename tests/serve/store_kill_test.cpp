// A program that changes a configuration is killed at many moments: the file must hold one of the states that it
// applied, whole.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
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
    /// Has the program make its changes, or kill itself at a call of the system.
    test::Outcome Run(int seed, int call = 0) { return test::RunProcess(MakeCommand(seed, Changes, call)); }

    /// Has the program make changes until its log has so many lines and then some microseconds more.
    test::Outcome RunUntil(int seed, std::size_t lines, int microseconds) {
        test::Command command = MakeCommand(seed, std::numeric_limits<int>::max(), 0);
        command.watch = [this, lines, microseconds](pid_t process, std::string const&) {
            std::string const text = test::ReadFile(log_);
            if (static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) < lines) return;
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
            kill(process, SIGKILL);
        };
        return test::RunProcess(command);
    }

    test::Command MakeCommand(int seed, int changes, int call) {
        test::WriteFile(log_, "");
        return {.program = QEL_SETTINGS_CHANGER,
                .arguments = {config_, log_, std::to_string(seed), std::to_string(changes), std::to_string(call)}};
    }

    /// That the files hold the state that was told of last, or the one before, as that change was not made any more.
    void ExpectAppliedState() {
        std::vector<std::string> const states = ReadStates();
        auto const end = states.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(states.size()));
        std::string const file = test::ReadFile(config_);
        EXPECT_NO_THROW(ParseDocument(file));
        EXPECT_NE(std::find(states.begin(), end, file), end) << file;
        std::string const lastGood = test::ReadFile(config_ + ".last-good");
        EXPECT_NO_THROW(ParseDocument(lastGood));
        EXPECT_NE(std::find(states.begin(), states.end(), lastGood), states.end()) << lastGood;
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
    for (int round = 0; round < QEL_KILLS; ++round) {
        SCOPED_TRACE(round);
        std::size_t const lines = 1 + random() % Changes;
        test::Outcome const outcome = RunUntil(round, lines, static_cast<int>(random() % 3000));
        ASSERT_EQ(outcome.exitCode, -SIGKILL) << outcome.error;
        ASSERT_GE(ReadStates().size(), lines);
        ExpectAppliedState();
    }
    EXPECT_EQ(Run(100).exitCode, 0);
    EXPECT_EQ(ReadStates().size(), Changes + 1U);
    EXPECT_EQ(test::ReadFile(config_), ReadStates().front());
    // What a kill has left beside the files is gone with the next start.
    for (auto const& entry : std::filesystem::directory_iterator(directory_.GetPath())) {
        EXPECT_EQ(entry.path().string().find(".unfinished-"), std::string::npos) << entry.path();
    }
}

TEST_F(StoreKilled, LeavesOneWholeStateWhicheverCallOfTheSystemIsTheLast) {
    ASSERT_EQ(RunUntil(0, 10, 0).exitCode, -SIGKILL);
    // A change takes nine calls, and the log is one of them; the start takes a few.
    constexpr int Calls = 50;
    for (int call = 1; call <= Calls; call += Calls / 2 / QEL_KILLS) {
        SCOPED_TRACE(call);
        test::Outcome const outcome = Run(call, call);
        ASSERT_EQ(outcome.exitCode, -SIGKILL) << outcome.error;
        if (ReadStates().empty()) {
            EXPECT_NO_THROW(ParseDocument(test::ReadFile(config_)));
        } else {
            ExpectAppliedState();
        }
    }
}

}  // namespace
}  // namespace qel::serve
