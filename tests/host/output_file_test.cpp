#include "output_file.hpp"

#include <csignal>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::host {
namespace {

using qel::test::MessageOf;
using test::ReadFile;
using test::TemporaryDirectory;

TEST(OutputFile, EmptiesAFileAndWritesAtOnce) {
    TemporaryDirectory const directory;
    std::string const path = directory / "file";
    test::WriteFile(path, "what was there before");
    OutputFile file(path);
    EXPECT_EQ(ReadFile(path), "");
    file.Write("one\n");
    EXPECT_EQ(ReadFile(path), "one\n");
    file.Write("");
    file.Write("two\n");
    EXPECT_EQ(ReadFile(path), "one\ntwo\n");
    file.Close();
    file.Close();
    EXPECT_EQ(ReadFile(path), "one\ntwo\n");
}

TEST(OutputFile, NamesThePathAndTheReason) {
    TemporaryDirectory const directory;
    std::string const nowhere = directory / "no/file";
    std::string const folder = directory.GetPath().string();
    EXPECT_EQ(MessageOf<Error>([&] { OutputFile file(nowhere); }),
              "cannot write '" + nowhere + "': No such file or directory");
    EXPECT_EQ(MessageOf<Error>([&] { OutputFile file(folder); }), "cannot write '" + folder + "': Is a directory");
    EXPECT_EQ(MessageOf<Error>([&] { OutputFile file(""); }), "cannot write '': No such file or directory");
    EXPECT_EQ(MessageOf<Error>([&] { OutputFile("/dev/full").Write("x"); }),
              "cannot write '/dev/full': No space left on device");
}

TEST(OutputFile, TakesAPieceBackThatDoesNotFitWhole) {
    TemporaryDirectory const directory;
    std::string const path = directory / "file";
    auto const before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    rlimit const limit{10, old.rlim_max};
    OutputFile file(path);
    setrlimit(RLIMIT_FSIZE, &limit);
    file.Write("1234567\n");
    std::string const error = MessageOf<Error>([&] { file.Write("abcdefg\n"); });
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(error, "cannot write '" + path + "': File too large");
    EXPECT_EQ(ReadFile(path), "1234567\n");
    file.Write("more\n");
    EXPECT_EQ(ReadFile(path), "1234567\nmore\n");
}

}  // namespace
}  // namespace qel::host
