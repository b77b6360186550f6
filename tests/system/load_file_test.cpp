#include "qel/system/plugin/load_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/system/get_library_path.hpp"
#include "system/folder.hpp"

namespace qel::system::plugin {
namespace {

std::vector<Problem> ProblemsOf(boost::filesystem::path const& file) {
    try {
        LoadFile(file);
    } catch (LoadError const& error) {
        return error.GetProblems();
    }
    return {};
}

TEST(LoadFile, LoadsAPluginOfAnyName) {
    Folder const folder;
    auto const file = folder.Add("silent", "libsomething_else.so");
    EXPECT_NO_THROW(LoadFile(file));
    EXPECT_EQ(GetLibraryPath("something_else"), file);
}

TEST(LoadFile, LetsOneAskWhatIsLoaded) {
    Folder const folder;
    auto const file = folder.Add("silent", "libasked.so");
    EXPECT_FALSE(IsLoaded(file));
    LoadFile(file);
    EXPECT_TRUE(IsLoaded(file));
    boost::filesystem::create_symlink(file, folder / "link.so");
    EXPECT_TRUE(IsLoaded(folder / "link.so"));
    EXPECT_FALSE(IsLoaded(folder / "missing.so"));
    EXPECT_FALSE(IsLoaded(folder.Write("text.so", "text")));
}

TEST(LoadFile, TellsWhatThePluginReportsWhileItLoads) {
    Folder const folder;
    auto const file = folder.Add("announces_itself", "plugin.so");
    EXPECT_THAT(ProblemsOf(file), testing::ElementsAre(Problem{file, "announces itself"}));
}

TEST(LoadFile, RefusesWhatLoadAllRefuses) {
    Folder const folder;
    auto const file = folder.Write("plugin.so", "");
    EXPECT_THAT(ProblemsOf(file),
                testing::ElementsAre(Problem{file, "is not a shared library: it is only 0 bytes long"}));
}

TEST(LoadFile, SaysThatAFileIsMissing) {
    Folder const folder;
    EXPECT_THAT(ProblemsOf(folder / "missing.so"),
                testing::ElementsAre(Problem{folder / "missing.so", "does not exist"}));
}

}  // namespace
}  // namespace qel::system::plugin
