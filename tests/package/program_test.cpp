#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "installation.hpp"
#include "support/test_video.hpp"

namespace qel::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(InstalledProgram, ListsAPluginThatWasPutBesideTheLibrary) {
    Installation const installation;
    auto const file = installation.AddPlugin("plugin/bright_spots");
    EXPECT_THAT(installation.Qel({"algorithms"}), AllOf(StartsWith("example.BrightSpots\n"), HasSubstr(file.string())));
}

TEST(InstalledProgram, RunsAPluginThatWasPutBesideTheLibrary) {
    Installation const installation;
    installation.AddPlugin("plugin/bright_spots");
    TemporaryDirectory const folder;
    WriteMovingSquare(folder / "square.mkv", {.frames = 3});
    auto const run = [&](std::string const& property) {
        return installation.Qel(
            {"run", folder / "square.mkv", "--algorithm", "example.BrightSpots", "--set", property, "--quiet"});
    };
    std::string const lines = run("smallest_area=64");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3);
    EXPECT_THAT(lines, HasSubstr(R"("label":"bright spot"},"x":4,"y":8,"w":8,"h":8,"area":64}]})"));
    EXPECT_THAT(run("smallest_area=65"), testing::Not(HasSubstr("bright spot")));
}

TEST(InstalledProgram, HandsWhatAPluginChangesToTheNext) {
    Installation const installation;
    installation.AddPlugin("plugin/bright_spots");
    installation.AddPlugin("plugin/spotlight");
    TemporaryDirectory const folder;
    WriteMovingSquare(folder / "square.mkv", {.frames = 3});
    auto const run = [&](std::string const& first, std::string const& second) {
        return installation.Qel({"run", folder / "square.mkv", "--algorithm", first, "--algorithm", second, "--set",
                                 "brightness=50", "--quiet"});
    };
    // The spot stays as bright as it is where it has been found before, or else becomes too dark to be found.
    EXPECT_THAT(run("bright_spots", "spotlight"), HasSubstr("bright spot"));
    EXPECT_THAT(run("spotlight", "bright_spots"), testing::Not(HasSubstr("bright spot")));
}

}  // namespace
}  // namespace qel::test
