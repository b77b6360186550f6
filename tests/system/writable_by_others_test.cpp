#include "qel/system/plugin/writable_by_others.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "system/folder.hpp"

namespace qel::system::plugin {
namespace {

namespace fs = boost::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class WritableByOthers : public testing::Test {
protected:
    WritableByOthers() : file(folder.Add("silent", "libtest_a.so")) {
        fs::permissions(file, fs::owner_all | fs::group_read | fs::others_read);
    }
    ~WritableByOthers() override { AllowWritableByOthers(false); }

    Problem Refused(std::string const& what, fs::path const& mend) const {
        return {file, what +
                          " can be written by every user, who could change what this process runs: take the "
                          "permission away (chmod o-w " +
                          mend.string() + "), or allow such plug-ins"};
    }

    Folder folder;
    fs::path file;
};

TEST_F(WritableByOthers, RefusesAFileThatAllMayWrite) {
    EXPECT_THAT(Load({folder.GetPath()}), IsEmpty());
    fs::permissions(file, fs::add_perms | fs::others_write);
    EXPECT_THAT(Load({folder.GetPath()}), ElementsAre(Refused("the file", file)));
}

TEST_F(WritableByOthers, RefusesAFileInAFolderThatAllMayWriteUnlessItIsSticky) {
    fs::permissions(folder.GetPath(), fs::add_perms | fs::others_write);
    EXPECT_THAT(Load({folder.GetPath()}), ElementsAre(Refused("its folder", folder.GetPath())));
    fs::permissions(folder.GetPath(), fs::add_perms | fs::sticky_bit);
    EXPECT_THAT(Load({folder.GetPath()}), IsEmpty());
}

TEST_F(WritableByOthers, LooksAtWhatALinkLeadsToAndAtBothFolders) {
    Folder const links;
    fs::create_symlink(file, links / "libtest_a.so");
    EXPECT_THAT(Load({links.GetPath()}), IsEmpty());
    fs::permissions(folder.GetPath(), fs::add_perms | fs::others_write);
    auto const problems = Load({links.GetPath()});
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].file, links / "libtest_a.so");
    EXPECT_EQ(problems[0].reason, Refused("its folder", folder.GetPath()).reason);
    fs::permissions(folder.GetPath(), fs::remove_perms | fs::others_write);
    fs::permissions(links.GetPath(), fs::add_perms | fs::others_write);
    EXPECT_EQ(Load({links.GetPath()}).size(), 1U);
}

TEST_F(WritableByOthers, MayBeAllowed) {
    fs::permissions(file, fs::add_perms | fs::others_write);
    fs::permissions(folder.GetPath(), fs::add_perms | fs::others_write);
    AllowWritableByOthers(true);
    EXPECT_THAT(Load({folder.GetPath()}), IsEmpty());
}

TEST_F(WritableByOthers, LeavesTheGroupAlone) {
    fs::permissions(file, fs::add_perms | fs::group_write);
    EXPECT_THAT(Load({folder.GetPath()}), IsEmpty());
}

}  // namespace
}  // namespace qel::system::plugin
