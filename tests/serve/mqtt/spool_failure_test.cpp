// What the disk may do to a spool.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "error.hpp"
#include "mqtt/spool.hpp"
#include "support/file_size_limit.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "support/unprivileged.hpp"

namespace qel::serve::mqtt {
namespace {

using test::FileSizeLimit;
using test::MessageOf;
using test::ReadFile;
using test::TemporaryDirectory;
using test::WriteFile;

constexpr std::uint64_t Plenty = 1 << 20;

std::vector<std::string> TakeAll(Spool& spool) {
    std::vector<std::string> records;
    while (auto record = spool.Take()) records.push_back(std::move(record->bytes));
    return records;
}

std::vector<std::string> Segments(TemporaryDirectory const& folder) {
    std::vector<std::string> paths;
    for (auto const& entry : std::filesystem::directory_iterator(folder.GetPath())) {
        if (entry.path().extension() == ".segment") paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

TEST(SpoolFailure, ARecordCutShortAtAnyByteIsLeftOutAndTheOnesBeforeItAreKept) {
    TemporaryDirectory const folder;
    {
        Spool spool(folder.GetPath().string(), Plenty);
        for (char const* record : {"first", "second", "third"}) spool.Append(record);
    }
    ASSERT_EQ(Segments(folder).size(), 1U);
    std::string const path = Segments(folder)[0];
    std::string const bytes = ReadFile(path);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        SCOPED_TRACE(size);
        for (auto const& left : Segments(folder)) std::filesystem::remove(left);
        WriteFile(path, bytes.substr(0, size));
        Spool spool(folder.GetPath().string(), Plenty);
        spool.Append("next");
        std::vector<std::string> expected;
        if (size >= 28 + 13) expected.push_back("first");
        if (size >= 28 + 13 + 14) expected.push_back("second");
        if (size == bytes.size()) expected.push_back("third");
        expected.push_back("next");
        EXPECT_EQ(TakeAll(spool), expected);
        EXPECT_EQ(spool.GetCounts().lost, 0U);
    }
}

TEST(SpoolFailure, RecordsBehindDamageInTheMiddleAreCountedAsLost) {
    TemporaryDirectory const folder;
    for (char const* record : {"a", "b", "c"}) {
        Spool spool(folder.GetPath().string(), Plenty);
        spool.Append(record);
        spool.Append(record);
    }
    ASSERT_EQ(Segments(folder).size(), 3U);
    std::string bytes = ReadFile(Segments(folder)[1]);
    bytes.back() = '?';
    WriteFile(Segments(folder)[1], bytes);
    Spool spool(folder.GetPath().string(), Plenty);
    EXPECT_EQ(spool.GetCounts().lost, 1U);
    EXPECT_EQ(TakeAll(spool), (std::vector<std::string>{"a", "a", "b", "c", "c"}));
}

TEST(SpoolFailure, DamageDoneWhileItIsOpenCostsTheRecordsBehindItInThatFileOnly) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), Plenty);
    for (char const* record : {"a", "b", "c"}) spool.Append(record);
    EXPECT_EQ(spool.Take()->bytes, "a");
    std::string bytes = ReadFile(Segments(folder)[0]);
    bytes[28 + 9 + 8] = '?';
    WriteFile(Segments(folder)[0], bytes);
    EXPECT_EQ(spool.Take(), std::nullopt);
    EXPECT_EQ(spool.GetCounts().lost, 2U);
    spool.Append("d");
    auto const record = spool.Take();
    EXPECT_EQ(record->bytes, "d");
    EXPECT_EQ(record->number, 4U);
    spool.Complete(4);
    EXPECT_EQ(spool.GetCounts().messages, 0U);
}

TEST(SpoolFailure, WithoutItsPositionEverythingIsGivenOutAgainUnderItsNumber) {
    TemporaryDirectory const folder;
    {
        Spool spool(folder.GetPath().string(), Plenty);
        for (char const* record : {"a", "b"}) spool.Append(record);
        spool.Take();
        spool.Complete(1);
    }
    WriteFile(folder / "position", "nonsense");
    Spool spool(folder.GetPath().string(), Plenty);
    auto const record = spool.Take();
    EXPECT_EQ(record->bytes, "a");
    EXPECT_EQ(record->number, 1U);
}

TEST(SpoolFailure, NumbersAreNotUsedTwiceWhereThePositionIsAheadOfTheRecords) {
    TemporaryDirectory const folder;
    {
        Spool spool(folder.GetPath().string(), Plenty);
        for (int i = 0; i < 9; ++i) spool.Append("x");
        while (auto const record = spool.Take()) spool.Complete(record->number);
    }
    for (auto const& path : Segments(folder)) std::filesystem::remove(path);
    Spool spool(folder.GetPath().string(), Plenty);
    spool.Append("y");
    EXPECT_EQ(spool.Take()->number, 10U);
}

TEST(SpoolFailure, AFullDiskCostsTheRecordThatFoundNoRoomAndNoOther) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), Plenty);
    std::string const path = folder / "00000000000000000001.segment";
    spool.Append("a");
    for (rlim_t room = 0; room < 18; ++room) {
        SCOPED_TRACE(room);
        FileSizeLimit const limit(std::filesystem::file_size(path) + room);
        EXPECT_EQ(MessageOf<host::Error>([&] { spool.Append("0123456789"); }),
                  "cannot write '" + path + "': File too large");
    }
    EXPECT_EQ(spool.GetCounts().lost, 18U);
    spool.Append("b");
    EXPECT_EQ(TakeAll(spool), (std::vector<std::string>{"a", "b"}));
}

TEST(SpoolFailure, AFullDiskLeavesNoFileWithoutItsHeader) {
    TemporaryDirectory const folder;
    Spool spool(folder.GetPath().string(), Plenty);
    {
        FileSizeLimit const limit(20);
        EXPECT_THROW(spool.Append("a"), host::Error);
        EXPECT_TRUE(Segments(folder).empty());
    }
    spool.Append("b");
    EXPECT_EQ(spool.Take()->bytes, "b");
}

TEST(SpoolFailure, WhatCannotBeOpenedIsSaid) {
    TemporaryDirectory const folder;
    std::filesystem::permissions(folder.GetPath(),
                                 std::filesystem::perms::group_all | std::filesystem::perms::others_all,
                                 std::filesystem::perm_options::add);
    std::string const path = folder / "spool";
    {
        Spool spool(path, Plenty);
        EXPECT_EQ(MessageOf<host::Error>([&] { Spool second(path, Plenty); }),
                  "another program uses the spool '" + path + "': end it first, or give each a folder of its own");
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0700U) << "nobody else reads what was seen";
    }
    std::filesystem::create_directory(folder / "closed");
    std::filesystem::permissions(folder / "closed", std::filesystem::perms::none);
    {
        test::Unprivileged const unprivileged;
        EXPECT_EQ(MessageOf<host::Error>([&] { Spool spool(folder / "closed", Plenty); }),
                  "cannot open '" + folder / "closed" + "/lock': Permission denied");
        EXPECT_EQ(MessageOf<host::Error>([&] { Spool spool(folder / "closed/inner", Plenty); }),
                  "cannot make the folder '" + folder / "closed/inner" + "': Permission denied");
    }
    std::filesystem::permissions(folder / "closed", std::filesystem::perms::owner_all);
    WriteFile(folder / "file", "");
    EXPECT_THROW(Spool(folder / "file", Plenty), host::Error);
    EXPECT_EQ(MessageOf<host::Error>([&] { Spool small(folder / "small", 4095); }),
              "a spool takes at least 4096 bytes");
}

}  // namespace
}  // namespace qel::serve::mqtt
