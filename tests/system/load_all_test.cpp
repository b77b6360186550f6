#include "qel/system/plugin/load_all.hpp"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/system/get_library_path.hpp"
#include "qel/system/plugin/report.hpp"
#include "system/folder.hpp"

namespace qel::system::plugin {

void PrintTo(Problem const& problem, std::ostream* stream) { *stream << problem.file << ": " << problem.reason; }

namespace {

namespace fs = boost::filesystem;
using testing::ElementsAre;

Problem Loaded(fs::path const& file) { return {file, "announces itself"}; }

TEST(LoadAll, LoadsNothingFromAnEmptyFolderOrFromNone) {
    Folder const folder;
    EXPECT_NO_THROW(LoadAll("test_", {folder.GetPath()}));
    EXPECT_NO_THROW(LoadAll("test_", {}));
}

TEST(LoadAll, LoadsAPluginForGood) {
    Folder const folder;
    auto const file = folder.Add("silent", "libtest_kept.so");
    EXPECT_NO_THROW(LoadAll("test_", {folder.GetPath()}));
    EXPECT_EQ(GetLibraryPath("test_kept"), file);
}

TEST(LoadAll, TakesTheFilesWhoseNamesCarryThePrefixAndTheExtension) {
    Folder const folder;
    for (char const* name : {"libtest_.so", "libtest_a.so", "libtest_a.so.so", "libtest_a.so.1", "libtest_a.SO",
                             "libtest.so", "test_a.so", "libtest-a.so", "xlibtest_a.so", "libtest_so", "libtest_aso"}) {
        folder.Add("announces_itself", name);
    }
    EXPECT_THAT(Load({folder.GetPath()}), ElementsAre(Loaded(folder / "libtest_.so"), Loaded(folder / "libtest_a.so"),
                                                      Loaded(folder / "libtest_a.so.so")));
}

TEST(LoadAll, GoesThroughTheDirectoriesInTurnAndEachByFileName) {
    Folder const first, second;
    for (char const* name : {"libtest_b.so", "libtest_a.so", "libtest_10.so", "libtest_9.so"}) {
        first.Add("announces_itself", name);
    }
    second.Add("announces_itself", "libtest_0.so");
    EXPECT_THAT(
        Load({first.GetPath(), second.GetPath()}),
        ElementsAre(Loaded(first / "libtest_10.so"), Loaded(first / "libtest_9.so"), Loaded(first / "libtest_a.so"),
                    Loaded(first / "libtest_b.so"), Loaded(second / "libtest_0.so")));
}

TEST(LoadAll, LoadsAFileOnceHoweverOftenItIsMet) {
    Folder const folder, other;
    auto const file = folder.Add("announces_itself", "libtest_b.so");
    fs::create_symlink(file, folder / "libtest_c.so");
    fs::create_hard_link(file, folder / "libtest_d.so");
    fs::create_symlink(file, other / "libtest_a.so");
    EXPECT_THAT(Load({folder.GetPath(), folder.GetPath(), other.GetPath()}), ElementsAre(Loaded(file)));
    EXPECT_THAT(Load({other.GetPath()}), ElementsAre());  // a later call finds it loaded
}

TEST(LoadAll, ReportsAFileThatFailsOnceHoweverOftenItIsMet) {
    Folder const folder;
    fs::create_symlink(folder.Write("libtest_a.so", "text"), folder / "libtest_b.so");
    EXPECT_EQ(Load({folder.GetPath(), folder.GetPath()}).size(), 1U);
}

TEST(LoadAll, GoesOnPastAFileThatFails) {
    Folder const folder;
    folder.Write("libtest_a.so", "");
    auto const good = folder.Add("announces_itself", "libtest_b.so");
    folder.Add("lacks_symbol", "libtest_c.so");
    auto const last = folder.Add("announces_itself", "libtest_d.so");
    auto const problems = Load({folder / "missing", folder.GetPath()});
    ASSERT_EQ(problems.size(), 5U);
    EXPECT_EQ(problems[0].file, folder / "missing");
    EXPECT_EQ(problems[1].file, folder / "libtest_a.so");
    EXPECT_EQ(problems[2], Loaded(good));
    EXPECT_EQ(problems[3].file, folder / "libtest_c.so");
    EXPECT_EQ(problems[4], Loaded(last));
}

TEST(LoadAll, TakesARelativeDirectory) {
    Folder const folder;
    auto const file = folder.Add("announces_itself", "libtest_a.so");
    fs::path const former = fs::current_path();
    fs::current_path(folder.GetPath().parent_path());
    auto const problems = Load({folder.GetPath().filename()});
    fs::current_path(former);
    EXPECT_THAT(problems, ElementsAre(Loaded(file)));
}

TEST(LoadAll, MayRunInsideAPluginThatLoads) {
    Folder const folder;
    auto const outer = folder.Add("loads_more", "libtest_a.so");
    auto const last = folder.Add("announces_itself", "libtest_b.so");
    fs::create_directory(folder / "more");
    auto const inner = folder.Add("announces_itself", "more/libtest_inner.so");
    EXPECT_THAT(Load({folder.GetPath()}),
                ElementsAre(Problem{outer, inner.string() + ": announces itself"}, Loaded(last)));
}

TEST(LoadAll, MayRunOnSeveralThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            Folder const folder;
            for (int i = 0; i < 8; ++i) folder.Add("announces_itself", "libtest_" + std::to_string(i) + ".so");
            auto const problems = Load({folder.GetPath()});
            EXPECT_EQ(problems.size(), 8U);
            for (Problem const& problem : problems) EXPECT_EQ(problem.file.parent_path(), folder.GetPath());
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(Report, IsDroppedWhenNothingLoads) { EXPECT_FALSE(Report({"file", "reason"})); }

TEST(LoadError, SaysALineForEachProblem) {
    LoadError const error({{"/a/libx.so", "is broken"}, {"/b/liby.so", "is broken too"}});
    EXPECT_STREQ(error.what(), "/a/libx.so: is broken\n/b/liby.so: is broken too");
    LoadError copy({});
    copy = error;
    EXPECT_STREQ(copy.what(), error.what());
    EXPECT_THAT(copy.GetProblems(),
                ElementsAre(Problem{"/a/libx.so", "is broken"}, Problem{"/b/liby.so", "is broken too"}));
}

}  // namespace
}  // namespace qel::system::plugin
