#include "qel/system/plugin/find_candidates.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "system/folder.hpp"

namespace qel::system::plugin {
namespace {

namespace fs = boost::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindCandidates, TellsWhatLoadAllWouldTryWhateverItIs) {
    Folder const folder;
    EXPECT_THAT(FindCandidates("test_", folder.GetPath()), IsEmpty());
    for (char const* name : {"libtest_b.so", "libtest_a.so", "libtest_a.so.1", "libother.so", "notes.txt"}) {
        folder.Write(name, "");
    }
    fs::create_directory(folder / "libtest_c.so");
    fs::create_symlink("gone", folder / "libtest_d.so");
    EXPECT_THAT(FindCandidates("test_", folder.GetPath()),
                ElementsAre(folder / "libtest_a.so", folder / "libtest_b.so", folder / "libtest_c.so",
                            folder / "libtest_d.so"));
}

TEST(FindCandidates, GivesAbsolutePathsForARelativeFolder) {
    Folder const folder;
    folder.Write("libtest_a.so", "");
    fs::path const former = fs::current_path();
    fs::current_path(folder.GetPath());
    auto const candidates = FindCandidates("test_", ".");
    fs::current_path(former);
    ASSERT_EQ(candidates.size(), 1U);
    EXPECT_TRUE(candidates[0].is_absolute());
    EXPECT_TRUE(fs::equivalent(candidates[0], folder / "libtest_a.so"));
}

TEST(FindCandidates, ThrowsForAFolderThatCannotBeRead) {
    Folder const folder;
    EXPECT_THROW(FindCandidates("test_", folder / "missing"), fs::filesystem_error);
}

}  // namespace
}  // namespace qel::system::plugin
