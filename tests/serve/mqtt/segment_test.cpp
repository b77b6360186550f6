#include "mqtt/segment.hpp"

#include <gtest/gtest.h>

#include "error.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"

namespace qel::serve::mqtt {
namespace {

using test::ReadFile;
using test::TemporaryDirectory;
using test::WriteFile;

std::string NameOf(TemporaryDirectory const& folder) { return folder / "00000000000000000007.segment"; }

/// A segment with the records 7 "one", 8 "" and 9 "three".
void MakeSegment(TemporaryDirectory const& folder) {
    auto const segment = Segment::Create(folder.GetPath().string(), 0x1122334455667788U, 7);
    for (char const* record : {"one", "", "three"}) segment->Append(record);
}

TEST(Segment, HasTheLayoutThatItsHeaderFileTells) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    std::string const bytes = ReadFile(NameOf(folder));
    EXPECT_EQ(bytes.size(), 28U + 3 * 8 + 8);
    EXPECT_EQ(bytes.substr(0, 24), std::string("QELSPOOL\x88\x77\x66\x55\x44\x33\x22\x11\x07\0\0\0\0\0\0\0", 24));
    EXPECT_EQ(bytes.substr(28, 4), std::string("\3\0\0\0", 4));
    EXPECT_EQ(bytes.substr(36, 3), "one");
}

TEST(Segment, IsReadAsItWasWritten) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    auto const segment = Segment::Open(NameOf(folder));
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment->GetRun(), 0x1122334455667788U);
    EXPECT_EQ(segment->GetFirst(), 7U);
    EXPECT_EQ(segment->GetEnd(), 10U);
    EXPECT_EQ(segment->GetSize(), ReadFile(NameOf(folder)).size());
    char const* const records[] = {"one", "", "three"};
    for (std::uint64_t number = 7; number < 10; ++number) {
        EXPECT_EQ(segment->Read(segment->FindOffset(number), number), records[number - 7]);
        segment->Rest();
    }
    EXPECT_EQ(segment->FindOffset(10), segment->GetSize());
    EXPECT_EQ(segment->Read(segment->FindOffset(8), 9), std::nullopt) << "the number is part of the checksum";
}

TEST(Segment, EndsBeforeTheRecordInWhichTheFileWasCutShort) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    std::string const bytes = ReadFile(NameOf(folder));
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        SCOPED_TRACE(size);
        WriteFile(NameOf(folder), bytes.substr(0, size));
        auto const segment = Segment::Open(NameOf(folder));
        ASSERT_EQ(segment != nullptr, size >= 28);
        if (!segment) continue;
        std::uint64_t const end = size < 28 + 11 ? 7 : size < 28 + 11 + 8 ? 8 : size < bytes.size() ? 9 : 10;
        EXPECT_EQ(segment->GetEnd(), end);
    }
}

TEST(Segment, EndsBeforeARecordOfWhichOneBitIsWrong) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    std::string const bytes = ReadFile(NameOf(folder));
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(at);
            std::string wrong = bytes;
            wrong[at] = static_cast<char>(wrong[at] ^ (1 << bit));
            WriteFile(NameOf(folder), wrong);
            auto const segment = Segment::Open(NameOf(folder));
            ASSERT_EQ(segment != nullptr, at >= 28);
            if (segment) {
                EXPECT_EQ(segment->GetEnd(), at < 28 + 11 ? 7U : at < 28 + 11 + 8 ? 8U : 9U);
            }
        }
    }
}

TEST(Segment, IsNotTakenForOneOfAnotherNumberWhenItIsRenamed) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    std::filesystem::rename(NameOf(folder), folder / "00000000000000000008.segment");
    EXPECT_EQ(Segment::Open(folder / "00000000000000000008.segment"), nullptr);
}

TEST(Segment, KnowsItsNames) {
    EXPECT_TRUE(Segment::IsName("00000000000000000007.segment"));
    for (char const* name : {"", "position", "0000000000000000007.segment", "0000000000000000000x.segment",
                             "00000000000000000007.segments", "00000000000000000007.segment~"}) {
        EXPECT_FALSE(Segment::IsName(name)) << name;
    }
}

TEST(Segment, DoesNotTakeTheNameOfAnother) {
    TemporaryDirectory const folder;
    MakeSegment(folder);
    EXPECT_EQ(test::MessageOf<host::Error>([&] { Segment::Create(folder.GetPath().string(), 1, 7); }),
              "cannot open '" + NameOf(folder) + "': File exists");
    EXPECT_EQ(Segment::Open(NameOf(folder))->GetEnd(), 10U);
}

}  // namespace
}  // namespace qel::serve::mqtt
