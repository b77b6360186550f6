#include "mqtt/position.hpp"

#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using test::ReadFile;
using test::TemporaryDirectory;
using test::WriteFile;

TEST(Position, IsTheLastNumberThatWasSet) {
    TemporaryDirectory const folder;
    EXPECT_EQ(Position(folder / "position").Get(), 0U);
    for (std::uint64_t const number : {1ULL, 2ULL, 300ULL, 1ULL << 63U}) {
        Position(folder / "position").Set(number);
        EXPECT_EQ(Position(folder / "position").Get(), number);
    }
}

TEST(Position, FallsBackToTheNumberBeforeWhereAWriteWasCutShortAtAnyByte) {
    TemporaryDirectory const folder;
    std::string const path = folder / "position";
    std::string before;
    {
        Position position(path);
        position.Set(0x0102030405060708U);
        position.Set(0x1112131415161718U);
        before = ReadFile(path);
        position.Set(0x2122232425262728U);
    }
    std::string const after = ReadFile(path);
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t written = 0; written <= 12; ++written) {
        SCOPED_TRACE(written);
        WriteFile(path, after.substr(0, written) + before.substr(written));
        EXPECT_EQ(Position(path).Get(), written < 12 ? 0x1112131415161718U : 0x2122232425262728U);
    }
}

TEST(Position, GoesOnAfterAWriteThatWasCutShort) {
    TemporaryDirectory const folder;
    std::string const path = folder / "position";
    for (std::uint64_t number = 1; number <= 2; ++number) Position(path).Set(number);
    std::string bytes = ReadFile(path);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);  // the second place, which holds the 2
    WriteFile(path, bytes);
    EXPECT_EQ(Position(path).Get(), 1U);
    Position(path).Set(3);
    EXPECT_EQ(Position(path).Get(), 3U);
}

TEST(Position, IsNoughtWhereTheFileHoldsSomethingElse) {
    TemporaryDirectory const folder;
    WriteFile(folder / "position", std::string(2000, 'x'));
    EXPECT_EQ(Position(folder / "position").Get(), 0U);
}

TEST(Position, SaysWhichFileCannotBeOpened) {
    TemporaryDirectory const folder;
    std::string const path = folder / "missing/position";
    EXPECT_EQ(test::MessageOf<host::Error>([&] { Position position(path); }),
              "cannot open '" + path + "': No such file or directory");
}

}  // namespace
}  // namespace qel::serve::mqtt
