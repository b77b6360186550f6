// What LoadAll says of files that cannot be loaded.

#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/unprivileged.hpp"
#include "system/folder.hpp"

extern "C" int Dependency();

namespace qel::system::plugin {
namespace {

namespace fs = boost::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

/// The reason for the one file of the folder that fails.
std::string ReasonOf(Folder const& folder) {
    auto const problems = Load({folder.GetPath()});
    EXPECT_EQ(problems.size(), 1U);
    return problems.empty() ? "" : problems.front().reason;
}

std::string ReasonOfBytes(std::string const& bytes) {
    Folder const folder;
    folder.Write("libtest_a.so", bytes);
    return ReasonOf(folder);
}

std::string GoodBytes() { return ReadFile(fs::path(FIXTURES) / "silent.so"); }

/// The bytes of a plug-in with one value of its header changed.
template <class T>
std::string WithHeader(T Elf64_Ehdr::*member, T value) {
    std::string bytes = GoodBytes();
    reinterpret_cast<Elf64_Ehdr*>(bytes.data())->*member = value;
    return bytes;
}

TEST(LoadAllRefuses, AFileThatIsNoSharedLibrary) {
    EXPECT_EQ(ReasonOfBytes(""), "is not a shared library: it is only 0 bytes long");
    EXPECT_EQ(ReasonOfBytes("\x7f"
                            "ELF"),
              "is not a shared library: it is only 4 bytes long");
    EXPECT_EQ(ReasonOfBytes(std::string(100, 'x')),
              "is not a shared library: its first bytes are not those of an ELF file");
    EXPECT_EQ(ReasonOfBytes("!<arch>\n" + std::string(100, 'x')),
              "is not a shared library: its first bytes are not those of an ELF file");
}

TEST(LoadAllRefuses, AFileOfAnotherArchitecture) {
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_machine, EM_AARCH64)),
              "was built for another architecture: AArch64, while this process is x86-64");
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_machine, 4321)),
              "was built for another architecture: machine number 4321, while this process is x86-64");
    std::string bytes = WithHeader<Elf64_Half>(&Elf64_Ehdr::e_machine, EM_386);
    bytes[EI_CLASS] = ELFCLASS32;
    EXPECT_EQ(ReasonOfBytes(bytes), "was built for another architecture: x86 (32 bits), while this process is x86-64");
    bytes = GoodBytes();
    bytes[EI_DATA] = ELFDATA2MSB;
    EXPECT_THAT(ReasonOfBytes(bytes), StartsWith("was built for another architecture: "));
}

TEST(LoadAllRefuses, AnElfFileThatIsNoSharedLibrary) {
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_type, ET_EXEC)),
              "is a program, not a shared library");
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_type, ET_REL)),
              "is an object file, not a shared library: it was never linked");
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_type, ET_CORE)),
              "is a core dump, not a shared library");
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_type, 77)),
              "is not a shared library but an ELF file of another kind");
    EXPECT_EQ(ReasonOfBytes(ReadFile("/bin/true")), "is a program, not a shared library");
}

TEST(LoadAllRefuses, ATruncatedFileWhateverItsLength) {
    std::string const bytes = GoodBytes();
    std::size_t needed = 0;
    auto const* const header = reinterpret_cast<Elf64_Ehdr const*>(bytes.data());
    auto const* const segments = reinterpret_cast<Elf64_Phdr const*>(bytes.data() + header->e_phoff);
    for (int i = 0; i < header->e_phnum; ++i) {
        if (segments[i].p_type == PT_LOAD) needed = std::max(needed, segments[i].p_offset + segments[i].p_filesz);
    }
    for (std::size_t const size : {sizeof(Elf64_Ehdr), std::size_t{100}, std::size_t{1000}, needed / 2, needed - 1}) {
        SCOPED_TRACE(size);
        EXPECT_THAT(ReasonOfBytes(bytes.substr(0, size)),
                    StartsWith("is cut short or damaged: its header announces more than its " + std::to_string(size) +
                               " bytes"));
    }
}

TEST(LoadAllRefuses, AHeaderThatMakesNoSense) {
    EXPECT_EQ(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_phentsize, 1)),
              "is damaged: its ELF header makes no sense");
    for (Elf64_Off const offset : {~Elf64_Off{0}, Elf64_Off{1} << 62U, Elf64_Off{1} << 40U}) {
        EXPECT_THAT(ReasonOfBytes(WithHeader<Elf64_Off>(&Elf64_Ehdr::e_phoff, offset)),
                    StartsWith("is cut short or damaged: "));
    }
    EXPECT_THAT(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_phnum, 0xffff)),
                StartsWith("is cut short or damaged: "));
    EXPECT_THAT(ReasonOfBytes(WithHeader<Elf64_Half>(&Elf64_Ehdr::e_phnum, 0)),
                StartsWith("is refused by the loader: "));
}

TEST(LoadAllRefuses, AMissingSymbolByItsPlainName) {
    Folder const folder;
    folder.Add("lacks_symbol", "libtest_a.so");
    EXPECT_THAT(ReasonOf(folder), StartsWith("needs the symbol fixture::Missing(int, std::"));
}

TEST(LoadAllRefuses, AMissingLibraryByName) {
    Folder const folder;
    folder.Add("needs_dependency", "libtest_a.so");
    EXPECT_EQ(ReasonOf(folder),
              "needs the library libtest_unfindable.so.3, which cannot be opened: No such file or directory");
}

TEST(LoadAllRefuses, APluginBuiltAgainstAnotherVersionOfOurLibraries) {
    ASSERT_EQ(Dependency(), 1);  // version 1 is loaded with this program
    Folder const folder;
    folder.Add("needs_old_version", "libtest_a.so");
    EXPECT_EQ(ReasonOf(folder),
              "was built against libqel_test_dependency.so.0, while this process runs libqel_test_dependency.so.1: "
              "build it again for this version");
}

TEST(LoadAllRefuses, WhatIsNoFile) {
    Folder const folder;
    fs::create_directory(folder / "libtest_a.so");
    EXPECT_EQ(ReasonOf(folder), "is a directory, not a shared library");
    fs::remove(folder / "libtest_a.so");
    fs::create_symlink("gone.so", folder / "libtest_a.so");
    EXPECT_EQ(ReasonOf(folder), "is a link to gone.so, which does not exist");
    fs::remove(folder / "libtest_a.so");
    fs::create_symlink("libtest_a.so", folder / "libtest_a.so");
    EXPECT_EQ(ReasonOf(folder), "cannot be read: Too many levels of symbolic links");
    fs::remove(folder / "libtest_a.so");
    ASSERT_EQ(mkfifo((folder / "libtest_a.so").c_str(), 0600), 0);
    EXPECT_EQ(ReasonOf(folder), "is not a regular file");
}

TEST(LoadAllRefuses, AFileOrAFolderThatMayNotBeRead) {
    Folder const folder;
    auto const file = folder.Add("silent", "libtest_a.so");
    fs::permissions(folder.GetPath(), fs::add_perms | fs::others_read | fs::others_exe);
    fs::permissions(file, fs::no_perms);
    {
        test::Unprivileged const unprivileged;
        EXPECT_EQ(ReasonOf(folder), "cannot be read: Permission denied");
    }
    fs::permissions(folder.GetPath(), fs::no_perms);
    {
        test::Unprivileged const unprivileged;
        EXPECT_EQ(ReasonOf(folder), "cannot be searched for plug-ins: Permission denied");
    }
    fs::permissions(folder.GetPath(), fs::owner_all);
}

TEST(LoadAllRefuses, AFolderThatIsNone) {
    Folder const folder;
    auto const file = folder.Write("file", "");
    struct Case {
        fs::path directory;
        char const* cause;
    } const cases[] = {{folder / "missing", "No such file or directory"}, {file, "Not a directory"}};
    for (auto const& [directory, cause] : cases) {
        auto const problems = Load({directory});
        ASSERT_EQ(problems.size(), 1U);
        EXPECT_EQ(problems[0].file, directory);
        EXPECT_EQ(problems[0].reason, std::string("cannot be searched for plug-ins: ") + cause);
    }
}

TEST(LoadAllDeathTest, NamesThePluginWhoseStaticInitialiserThrows) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    Folder const folder;
    folder.Add("throws", "libtest_a.so");
    EXPECT_DEATH(LoadAll("test_", {folder.GetPath()}),
                 "libtest_a.so: a static initialiser of this plug-in threw an exception: no camera on this machine");
    fs::remove(folder / "libtest_a.so");
    folder.Add("throws_number", "libtest_b.so");
    EXPECT_DEATH(LoadAll("test_", {folder.GetPath()}),
                 "libtest_b.so: a static initialiser of this plug-in threw an exception that is no std::exception");
}

TEST(LoadAll, LeavesTheTerminateHandlerAsItWas) {
    auto const former = std::get_terminate();
    Folder const folder;
    folder.Add("silent", "libtest_a.so");
    EXPECT_NO_THROW(LoadAll("test_", {folder.GetPath()}));
    EXPECT_EQ(std::get_terminate(), former);
}

}  // namespace
}  // namespace qel::system::plugin
