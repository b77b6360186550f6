#include "qel/system/plugin/elf_file.hpp"

#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/system/get_library_path.hpp"
#include "system/folder.hpp"

namespace qel::system::plugin {
namespace {

TEST(ReadElfFile, GivesTheNamesThatTheLoaderWillUse) {
    ElfFile const file = ReadElfFile(GetLibraryPath("qel_system"));
    EXPECT_EQ(file.soname, "libqel_system.so.1");
    EXPECT_THAT(file.needed, testing::Contains("libc.so.6"));
    EXPECT_EQ(ReadElfFile(boost::filesystem::path(FIXTURES) / "silent.so").soname, "");
}

TEST(ReadElfFile, SaysWhatIsWrongWithAnyDamagedFileAndReadsNothingOutsideIt) {
    Folder const folder;
    std::string const good = ReadFile(boost::filesystem::path(FIXTURES) / "needs_dependency.so");
    std::mt19937 random(1);
    int refused = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string bytes = good;
        for (unsigned int i = 0; i < 1 + random() % 8; ++i) {
            // Half of the damage goes into the headers, the rest anywhere.
            std::size_t const end = random() % 2 == 0 ? 1024 : bytes.size();
            bytes[random() % end] = static_cast<char>(random() % 3 == 0 ? 0xff : random());
        }
        if (random() % 4 == 0) bytes.resize(random() % bytes.size());
        auto const file = folder.Write("libtest_a.so", bytes);
        try {
            ReadElfFile(file);
        } catch (std::runtime_error const& error) {
            EXPECT_THAT(error.what(),
                        testing::AnyOf(testing::StartsWith("is "), testing::StartsWith("was built for ")));
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

}  // namespace
}  // namespace qel::system::plugin
