#include "qel/system/plugin/find_file.hpp"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "qel/system/get_library_path.hpp"
#include "system/folder.hpp"

namespace qel::system::plugin {
namespace {

int const here = 0;

TEST(FindFile, NamesTheLibraryThatHoldsAnAddress) {
    // Inside a program the address of a library's function may be its own stub: the loader tells the real one.
    void* const function = dlsym(RTLD_DEFAULT, "malloc_usable_size");
    void* const library = dlopen(GetLibraryPath("qel_system").c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(function, nullptr);
    ASSERT_NE(library, nullptr);
    void* const own = dlsym(library, "_ZN3qel6system6plugin8FindFileEPKv");
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(FindFile(own), GetLibraryPath("qel_system"));
    EXPECT_TRUE(FindFile(function).is_absolute());
}

TEST(FindFile, NamesTheProgramForAnAddressOfItsOwn) {
    EXPECT_EQ(FindFile(&here), boost::filesystem::canonical("/proc/self/exe"));
}

TEST(FindFile, NamesAPluginByThePathItWasLoadedFrom) {
    Folder const folder;
    auto const file = folder.Add("silent", "libtest_named.so");
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(FindFile(dlsym(library, "Silent")), file);
}

TEST(FindFile, GivesAnEmptyPathForAnAddressOfNoFile) {
    auto const heap = std::make_unique<int>();
    int stack = 0;
    EXPECT_EQ(FindFile(heap.get()), "");
    EXPECT_EQ(FindFile(&stack), "");
    EXPECT_EQ(FindFile(nullptr), "");
}

}  // namespace
}  // namespace qel::system::plugin
