#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "installation.hpp"

namespace qel::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

TEST(InstalledPlugins, WithNoneTheLoaderCompletesAndTheRegistryStaysEmpty) { EXPECT_EQ(Installation().Probe(), ""); }

TEST(InstalledPlugins, AreLoadedListedConfiguredAndRun) {
    Installation const installation;
    installation.AddPlugin("plugins/counter");
    installation.AddPlugin("plugins/another");
    EXPECT_EQ(installation.Probe({"fixture.Counter"}),
              "algorithm: fixture.Another\n"
              "algorithm: fixture.Counter\n"
              "object: bright of 24 pixels at 0,0 to 10,4\n"
              "threshold: 200\n"
              "object: bright of 8 pixels at 0,0 to 10,4\n");
}

TEST(InstalledPlugins, MustHaveThePrefixInTheirNameAndLieBesideTheLibrary) {
    Installation const installation;
    auto const file = installation.AddPlugin("plugins/counter");
    std::filesystem::rename(file, file.parent_path() / "libqel_counter.so");
    std::filesystem::create_directory(file.parent_path() / "plugins");
    std::filesystem::rename(installation.AddPlugin("plugins/another"),
                            file.parent_path() / "plugins" / "libqel_algorithm_another.so");
    EXPECT_EQ(installation.Probe(), "");
}

TEST(InstalledPlugins, KeepTheFirstOfTwoThatShareAnIdentifierAndTellBothFiles) {
    Installation const installation;
    auto const copycat = installation.AddPlugin("plugins/copycat");
    auto const counter = installation.AddPlugin("plugins/counter");
    EXPECT_EQ(installation.Probe(), "problem: " + counter.string() +
                                        ": does not register \"fixture.Counter\": its identifier is taken by "
                                        "\"fixture.Counter\" of " +
                                        copycat.string() +
                                        "\n"
                                        "algorithm: fixture.Counter\n");
}

TEST(InstalledPlugins, ThatLackASymbolAreReportedAndTheOthersLoad) {
    Installation const installation;
    auto const file = installation.AddPlugin("plugins/incomplete", "a");
    installation.AddPlugin("plugins/counter");
    EXPECT_THAT(installation.Probe(),
                AllOf(StartsWith("problem: " + file.string() + ": "), HasSubstr("QelFunctionThatNobodyHas"),
                      EndsWith("\nalgorithm: fixture.Counter\n")));
}

TEST(InstalledPlugins, ThatAreNoLibraryAreReportedAndTheOthersLoad) {
    Installation const installation;
    auto const text = installation.GetFolder() / "libqel_algorithm_a.so";
    std::ofstream(text) << "not a library\n";
    auto const empty = installation.GetFolder() / "libqel_algorithm_b.so";
    std::ofstream{empty};
    installation.AddPlugin("plugins/counter");
    EXPECT_THAT(installation.Probe(),
                AllOf(StartsWith("problem: " + text.string() + ": "), HasSubstr("\nproblem: " + empty.string() + ": "),
                      EndsWith("\nalgorithm: fixture.Counter\n")));
}

TEST(InstalledPlugins, BuiltAgainstAnotherSonameAreReportedAndTheOthersLoad) {
    Installation const installation;
    auto const file = installation.AddPlugin("plugins/outdated", "a");
    installation.AddPlugin("plugins/counter");
    EXPECT_THAT(installation.Probe(),
                AllOf(StartsWith("problem: " + file.string() + ": "), HasSubstr("libqel_algorithm.so.0"),
                      HasSubstr("libqel_algorithm.so.1"), EndsWith("\nalgorithm: fixture.Counter\n")));
}

TEST(InstalledPlugins, AllProblemsAreToldInTheOrderOfTheFiles) {
    Installation const installation;
    auto const first = installation.AddPlugin("plugins/outdated", "a");
    auto const second = installation.AddPlugin("plugins/incomplete", "b");
    installation.AddPlugin("plugins/counter", "c");
    auto const fourth = installation.AddPlugin("plugins/copycat", "d");
    std::string const output = installation.Probe({"fixture.Counter"});
    auto const at = [&output](std::filesystem::path const& file) { return output.find("problem: " + file.string()); };
    EXPECT_EQ(at(first), 0U);
    EXPECT_LT(at(first), at(second));
    EXPECT_LT(at(second), at(fourth));
    EXPECT_THAT(output, HasSubstr("\nalgorithm: fixture.Counter\nobject: bright of 24 pixels at 0,0 to 10,4\n"));
}

TEST(ExamplePlugin, FindsBrightSpotsAboveItsThreshold) {
    Installation const installation;
    installation.AddPlugin("plugin/bright_spots");
    EXPECT_EQ(installation.Probe({"example.BrightSpots"}),
              "algorithm: example.BrightSpots\n"
              "object: bright spot of 12 pixels at 7,0 to 10,4\n"
              "threshold: 200\n"
              "object: bright spot of 4 pixels at 9,0 to 10,4\n");
}

TEST(ExamplePlugin, SpotlightRegistersBesideTheOther) {
    Installation const installation;
    installation.AddPlugin("plugin/bright_spots");
    installation.AddPlugin("plugin/spotlight");
    EXPECT_EQ(installation.Probe(), "algorithm: example.BrightSpots\nalgorithm: example.Spotlight\n");
}

}  // namespace
}  // namespace qel::test
