#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::test {

/// Runs of the program on a short video in a folder of its own.
class RunTest : public testing::Test {
protected:
    RunTest() : video(directory / "video.mkv") { WriteMovingSquare(video, {.frames = 20}); }

    /// A run with the algorithm of the tests.
    std::vector<std::string> Arguments(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"run", video, "--algorithm", "threshold"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    /// Expects a run to fail with exactly this line, and with nothing else said.
    void ExpectRefused(std::vector<std::string> const& arguments, int exitCode, std::string const& line) const {
        Outcome const outcome = RunProgram(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_EQ(outcome.error, "qel: " + line + "\n");
        EXPECT_EQ(outcome.output, "");
    }

    void MakeLongVideo() const { WriteMovingSquare(video, {.width = 1024, .height = 48, .frames = 500}); }

    TemporaryDirectory directory;
    std::string video;
};

}  // namespace qel::test
