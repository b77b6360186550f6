// qel plugins: what became of each file that may be a plug-in.
#include <filesystem>
#include <string>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace files = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char Counter[] = QEL_TEST_MORE_PLUGINS "/counter/libqel_algorithm_counter.so";

class PluginsCommand : public testing::Test {
protected:
    /// Puts a copy of a plug-in into the folder.
    std::string Add(std::string const& file, std::string const& name) const {
        files::copy_file(file, folder / name);
        return folder / name;
    }

    static Outcome Plugins(std::vector<std::string> more) {
        more.insert(more.begin(), "plugins");
        return RunProgram(std::move(more));
    }

    /// What the program says of a file, after its name; empty when it does not name it.
    static std::string About(Outcome const& outcome, std::string const& file) {
        auto const start = outcome.output.find(file + "\n");
        if (start == std::string::npos) return {};
        std::string const rest = outcome.output.substr(start + file.size() + 1);
        return rest.substr(0, rest.find("\n\n") == std::string::npos ? rest.size() : rest.find("\n\n") + 1);
    }

    TemporaryDirectory folder;
};

TEST_F(PluginsCommand, ListsTheInstalledOnesWithTheirAlgorithms) {
    Outcome const outcome = Plugins({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output,
              QEL_TEST_PLUGINS "/libqel_algorithm_threshold.so\n  loaded: test.Fail, test.Invert, test.Threshold\n");
}

TEST_F(PluginsCommand, SaysWhatIsWrongWithEachFile) {
    std::string const good = Add(Counter, "libqel_algorithm_a.so");
    std::string const twin = Add(Counter, "libqel_algorithm_b.so");
    std::string const link = folder / "libqel_algorithm_c.so";
    files::create_symlink(good, link);
    std::string const silent = Add(QEL_TEST_SILENT_PLUGIN, "libqel_algorithm_d.so");
    std::string const text = folder / "libqel_algorithm_e.so";
    WriteFile(text, std::string(100, 'x'));
    std::string const open = Add(QEL_TEST_SILENT_PLUGIN, "libqel_algorithm_f.so");
    files::permissions(open, files::perms::others_write, files::perm_options::add);

    Outcome const outcome = Plugins({"--plugins", folder.GetPath()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(About(outcome, good), "  loaded: fixture.Counter\n");
    EXPECT_EQ(About(outcome, twin),
              "  loaded\n  problem: does not register \"fixture.Counter\": its identifier is taken by "
              "\"fixture.Counter\" of " +
                  good + "\n");
    EXPECT_EQ(About(outcome, link), "  loaded: fixture.Counter\n  problem: is the same file as " + good + "\n");
    EXPECT_EQ(About(outcome, silent),
              "  loaded\n  problem: registers no algorithm: nothing in it calls video::registry::Register while it is "
              "loaded\n");
    EXPECT_EQ(About(outcome, text),
              "  not loaded\n  problem: is not a shared library: its first bytes are not those of an ELF file\n");
    EXPECT_THAT(About(outcome, open), StartsWith("  not loaded\n  problem: the file can be written by every user"));
}

TEST_F(PluginsCommand, LoadsWhatAllMayWriteWhereThatIsAllowed) {
    std::string const file = Add(Counter, "libqel_algorithm_a.so");
    files::permissions(file, files::perms::others_write, files::perm_options::add);
    Outcome const outcome = Plugins({"--plugins", folder.GetPath(), "--allow-writable-plugins"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(About(outcome, file), "  loaded: fixture.Counter\n");
    EXPECT_THAT(RunProgram({"algorithms", "--plugins", folder.GetPath()}).error,
                StartsWith("qel: warning: " + file + ": the file can be written by every user"));
    EXPECT_EQ(RunProgram({"algorithms", "--plugins", folder.GetPath(), "--allow-writable-plugins"}).error, "");
}

TEST_F(PluginsCommand, ExplainsOneFileAndWhatItNeeds) {
    std::string const file = Add(Counter, "libqel_algorithm_a.so");
    Outcome const outcome = Plugins({"--explain", file});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, StartsWith(file + "\n  loaded: fixture.Counter\n  soname: none\n  needs: "));
    EXPECT_THAT(outcome.output, HasSubstr("libqel_algorithm.so.1"));
    EXPECT_THAT(outcome.output, EndsWith("\n"));
}

TEST_F(PluginsCommand, ExplainsWhyNoLoaderWouldFindAFile) {
    Outcome const outcome = Plugins({"--explain", Add(Counter, "counter.so")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("  loaded: fixture.Counter\n  problem: is not found by itself: its name is "
                                          "not libqel_algorithm_*.so\n"));
}

TEST_F(PluginsCommand, ExplainsAFileThatCannotBeLoaded) {
    std::string const file = folder / "libqel_algorithm_a.so";
    Outcome outcome = Plugins({"--explain", file});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, file + "\n  not loaded\n  problem: does not exist\n");
    WriteFile(file, "");
    outcome = Plugins({"--explain", file});
    EXPECT_EQ(outcome.output, file + "\n  not loaded\n  problem: is not a shared library: it is only 0 bytes long\n");
}

TEST_F(PluginsCommand, WritesJsonForPrograms) {
    std::string const file = Add(Counter, "libqel_algorithm_a.so");
    auto const list = boost::json::parse(Plugins({"--plugins", folder.GetPath(), "--json"}).output);
    auto const& plugins = list.at("plugins").as_array();
    ASSERT_EQ(plugins.size(), 2U);
    EXPECT_EQ(plugins[1], (boost::json::value{{"file", file},
                                              {"loaded", true},
                                              {"algorithms", boost::json::array{"fixture.Counter"}},
                                              {"problems", boost::json::array{}}}));
    auto const one = boost::json::parse(Plugins({"--explain", file, "--json"}).output);
    EXPECT_EQ(one.at("soname"), "");
    EXPECT_FALSE(one.at("needs").as_array().empty());
}

}  // namespace
}  // namespace qel::test
