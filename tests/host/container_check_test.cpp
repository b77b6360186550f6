#include "container_check.hpp"

#include <cstdint>

#include <gtest/gtest.h>

#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::host {
namespace {

using test::TemporaryDirectory;
using test::WriteFile;

std::string Number(std::uint64_t value, int bytes, bool bigEndian) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        int const shift = 8 * (bigEndian ? bytes - 1 - i : i);
        text += static_cast<char>(value >> shift & 0xFF);
    }
    return text;
}

std::string Riff(std::uint32_t length, std::size_t present) {
    return "RIFF" + Number(length, 4, false) + std::string(present, 'x');
}

std::string Box(std::uint32_t length, std::string const& type, std::size_t present) {
    return Number(length, 4, true) + type + std::string(present, '\0');
}

std::string const Ebml =
    "\x1A\x45\xDF\xA3\x84"
    "head";
std::string const Segment = "\x18\x53\x80\x67";

TEST(CountMissingBytes, ComparesWhatTheHeadersSayWithTheSizeOfTheFile) {
    struct Case {
        char const* name;
        std::string bytes;
        std::uint64_t missing;
    };
    Case const cases[] = {
        {"empty", "", 0},
        {"no container", "just some text that is no video", 0},
        {"whole RIFF", Riff(100, 100), 0},
        {"cut RIFF", Riff(100, 30), 70},
        {"RIFF without its last padding byte", Riff(100, 99), 0},
        {"RIFF whose length was never filled in", Riff(0, 30), 0},
        {"RIFF whose length is not known", Riff(0xFFFFFFFF, 30), 0},
        {"second RIFF cut", Riff(10, 10) + Riff(50, 20), 30},
        {"odd RIFF, then a second one cut", Riff(9, 10) + Riff(50, 20), 30},
        {"RIFF with something else behind it", Riff(10, 10) + "something else", 0},
        {"whole MP4", Box(16, "ftyp", 8) + Box(20, "moov", 12), 0},
        {"cut MP4", Box(16, "ftyp", 8) + Box(200, "mdat", 12), 180},
        {"cut MP4 with a long size", Box(16, "ftyp", 8) + Box(1, "mdat", 0) + Number(1000, 8, true), 984},
        {"MP4 with an absurd long size", Box(16, "ftyp", 8) + Box(1, "mdat", 0) + Number(UINT64_MAX, 8, true), 0},
        {"MP4 whose last box reaches to the end", Box(16, "ftyp", 8) + Box(0, "mdat", 12), 0},
        {"MP4 with a box that is too short to be one", Box(16, "ftyp", 8) + Box(4, "mdat", 12), 0},
        {"MP4 with bytes behind it that are no box", Box(16, "ftyp", 8) + "\xFF\xFF\xFF\xFF\x01\x02\x03\x04", 0},
        {"whole Matroska", Ebml + Segment + "\x88" + std::string(8, 'x'), 0},
        {"cut Matroska", Ebml + Segment + "\x88" + std::string(5, 'x'), 3},
        {"cut Matroska with a size of eight bytes", Ebml + Segment + "\x01" + Number(100, 7, true) + "12345", 95},
        {"Matroska of a size that is not known", Ebml + Segment + "\xFF" + std::string(5, 'x'), 0},
        {"Matroska with a size that is none", Ebml + Segment + std::string(9, '\0'), 0},
        {"Matroska with something else behind it", Ebml + "something else that is long", 0},
    };
    TemporaryDirectory const directory;
    std::string const path = directory / "file";
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        WriteFile(path, c.bytes);
        EXPECT_EQ(CountMissingBytes(path), c.missing);
    }
}

TEST(CountMissingBytes, TellsHowMuchOfARealVideoIsMissing) {
    TemporaryDirectory const directory;
    for (char const* encoder : {"video/x-raw ! avimux", "matroskamux", "videoconvert ! x264enc ! mp4mux"}) {
        SCOPED_TRACE(encoder);
        std::string const path = directory / "video";
        test::TestVideo video;
        video.encoder = encoder;
        test::WriteTestVideo(path, video, [](test::Canvas&) {});
        EXPECT_EQ(CountMissingBytes(path), 0U);
        auto const size = std::filesystem::file_size(path);
        test::CutFile(path, size - 100);
        EXPECT_EQ(CountMissingBytes(path), 100U);
    }
}

TEST(CountMissingBytes, FindsNothingToSayOfAFileThatIsNotThere) { EXPECT_EQ(CountMissingBytes("/nowhere/at/all"), 0U); }

}  // namespace
}  // namespace qel::host
