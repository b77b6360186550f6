#include "qel/system/get_library_path.hpp"

#include <stdexcept>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "system/folder.hpp"

namespace qel::system {
namespace {

TEST(GetLibraryPath, GivesTheAbsolutePathOfALoadedLibraryWithItsVersion) {
    auto const path = GetLibraryPath("qel_system");
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(boost::filesystem::is_regular_file(path));
    EXPECT_EQ(path.filename().string(), "libqel_system.so.1");
    EXPECT_EQ(GetLibraryPath("c").filename().string(), "libc.so.6");
}

TEST(GetLibraryPath, FindsALibraryWithoutAVersionByThePathItWasLoadedFrom) {
    plugin::Folder const folder;
    auto const file = folder.Add("silent", "libtest_unversioned.so");
    boost::filesystem::create_directory(folder / "inner");
    ASSERT_NE(dlopen((folder / "inner/../libtest_unversioned.so").c_str(), RTLD_NOW | RTLD_LOCAL), nullptr);
    EXPECT_EQ(GetLibraryPath("test_unversioned"), file);
}

TEST(GetLibraryPath, KeepsALinkThatIsTheLibraryItself) {
    plugin::Folder const folder, elsewhere;
    boost::filesystem::create_symlink(elsewhere.Add("silent", "target.so"), folder / "libtest_linked.so.2");
    ASSERT_NE(dlopen((folder / "libtest_linked.so.2").c_str(), RTLD_NOW | RTLD_LOCAL), nullptr);
    EXPECT_EQ(GetLibraryPath("test_linked"), folder / "libtest_linked.so.2");
}

TEST(GetLibraryPath, SaysSoWhenNoLibraryOfThatNameIsLoaded) {
    for (std::string const name :
         {"qel_syste", "qel_system.so", "qel_system.so.1", "", "libqel_system", "../lib/qel_system"}) {
        SCOPED_TRACE(name);
        try {
            GetLibraryPath(name);
            FAIL();
        } catch (std::runtime_error const& error) {
            EXPECT_EQ(error.what(), "The library lib" + name +
                                        ".so is not loaded in this process: it may be missing, renamed or linked "
                                        "statically");
        }
    }
}

}  // namespace
}  // namespace qel::system
