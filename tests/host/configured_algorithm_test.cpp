#include "configured_algorithm.hpp"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "run.hpp"
#include "support/message_of.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"

namespace qel::host {
namespace {

namespace node = configuration::node;
using qel::test::MessageOf;
using testing::ElementsAre;

TEST(ConfiguredAlgorithm, SaysThatAnAlgorithmCannotBeMade) {
    auto const make = [](char const* name) {
        Runtime runtime;
        ConfiguredAlgorithm algorithm(runtime, hash::MurmurThree32(name), {});
    };
    EXPECT_EQ(MessageOf<Error>([&] { make("test.Broken"); }), "cannot make the algorithm 'Broken': no model");
    EXPECT_EQ(MessageOf<Error>([&] { make("test.Nothing"); }),
              "cannot make the algorithm 'Nothing': its factory gives nothing");
    EXPECT_THAT(MessageOf<Error>([&] { make("test.Same"); }),
                testing::StartsWith("cannot make the algorithm 'Same': "));
}

VideoSource::Frame SquareFrame() {
    media::video::FrameBase<void> const frame(media::ColourFormat::Grey8, 13, 7, {}, {});
    auto* const pixels = static_cast<std::uint8_t*>(frame.GetPlane(0).GetBuffer());
    std::fill_n(pixels, frame.GetPlane(0).GetSize(), std::uint8_t{10});
    pixels[2 * 16 + 3] = 230;
    return MakeReadOnly(frame);
}

TEST(ConfiguredAlgorithm, StartsWithItsConfiguration) {
    algorithm::video::Result result;
    Runtime runtime;
    ConfiguredAlgorithm algorithm(runtime, hash::MurmurThree32("test.Threshold"),
                                  {{"label", "moving"}, {"confidence", "1"}});
    VideoSource::Frame const frame = SquareFrame();
    EXPECT_EQ(algorithm.Process(frame, result), frame);
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.objects[0].label, "moving");
    EXPECT_EQ(result.objects[0].confidence, 1);
    EXPECT_EQ(result.objects[0].box, (geometry::Rectangle<unsigned int>{3, 2, 4, 3}));
    EXPECT_THAT(algorithm.GetColourFormats(), ElementsAre(media::ColourFormat::Grey8, media::ColourFormat::Nv12));
}

TEST(ConfiguredAlgorithm, GivesAnAlgorithmThatChangesPixelsACopyOfTheFrame) {
    algorithm::video::Result result;
    Runtime runtime;
    ConfiguredAlgorithm algorithm(runtime, hash::MurmurThree32("test.Invert"), {});
    VideoSource::Frame const frame = SquareFrame();
    VideoSource::Frame const shown = algorithm.Process(frame, result);
    auto const at = [](VideoSource::Frame const& f, int x, int y) {
        return static_cast<std::uint8_t const*>(f.GetPlane(0).GetBuffer())[y * f.GetPlane(0).GetStride() + x];
    };
    EXPECT_EQ(at(frame, 3, 2), 230);
    EXPECT_EQ(at(shown, 3, 2), 25);
    EXPECT_EQ(at(shown, 12, 6), 245);
    EXPECT_EQ(shown.GetSize(), frame.GetSize());
}

TEST(CopyFrame, CopiesEveryPixelOfEveryFormatAndNothingBeyond) {
    for (int format = 0; format < 5; ++format) {
        SCOPED_TRACE(format);
        constexpr unsigned int Width = 7, Height = 5;
        media::video::FrameBase<void> const model(static_cast<media::ColourFormat>(format), Width, Height, {}, {});
        // The same frame in memory of its own, rows further apart, the last row of each plane cut after its last pixel.
        std::vector<std::vector<std::uint8_t>> memory;
        VideoSource::Frame::Planes planes{};
        std::size_t const rowBytes = format == 0 || format == 4 ? Width + (format == 4 ? 1 : 0) : 3 * Width;
        for (std::size_t i = 0; i < 4 && model.GetPlane(i); ++i) {
            std::size_t const rows = i == 0 ? Height : (Height + 1) / 2;
            std::size_t const bytes = i == 0 && format == 4 ? Width : rowBytes;
            memory.emplace_back(40 * (rows - 1) + bytes);
            for (std::size_t k = 0; k < memory.back().size(); ++k)
                memory.back()[k] = static_cast<std::uint8_t>(k * 5 + i);
            planes[i] = {memory.back().size(), memory.back().data(), 40};
        }
        VideoSource::Frame const frame(planes, model.GetColourFormat(), Width, Height, {}, {}, {}, {});
        auto const copy = CopyFrame(frame);
        for (std::size_t i = 0; i < memory.size(); ++i) {
            std::size_t const rows = i == 0 ? Height : (Height + 1) / 2;
            std::size_t const bytes = i == 0 && format == 4 ? Width : rowBytes;
            auto const& plane = copy.GetPlane(i);
            for (std::size_t y = 0; y < rows; ++y) {
                auto const* const row = static_cast<std::uint8_t const*>(plane.GetBuffer()) +
                                        y * static_cast<std::size_t>(plane.GetStride());
                EXPECT_TRUE(std::equal(row, row + bytes, memory[i].data() + 40 * y));
            }
        }
    }
}

/// Does something with the frames of a run.
class CallingSink final : public FrameSink {
public:
    explicit CallingSink(std::function<void(AnalysedFrame const&)> take) : take_(std::move(take)) {}
    std::string GetStage() const override { return "call"; }
    void Take(AnalysedFrame const& analysed) override { take_(analysed); }
    void Finish() override {}

private:
    std::function<void(AnalysedFrame const&)> take_;
};

TEST(ConfiguredAlgorithm, AChangeOfAPropertyWhileFramesFlowChangesTheNextFramesResult) {
    test::TemporaryDirectory const directory;
    test::WriteMovingSquare(directory / "video.mkv", {.frames = 8});
    VideoSource source(Locate(directory / "video.mkv"), {media::ColourFormat::Grey8});
    Runtime runtime;
    ConfiguredAlgorithm algorithm(runtime, hash::MurmurThree32("test.Threshold"), {});
    std::vector<std::size_t> objects;
    std::vector<std::string> labels;
    std::vector<std::unique_ptr<FrameSink>> sinks;
    sinks.push_back(std::make_unique<CallingSink>([&](AnalysedFrame const& analysed) {
        objects.push_back(analysed.result.objects.size());
        labels.push_back(objects.back() == 0 ? "" : analysed.result.objects[0].label);
        node::Map& configuration = algorithm.GetConfiguration();
        if (analysed.index == 1) configuration.Set("smallest_area", std::uint32_t{65});
        if (analysed.index == 3) configuration.Set("smallest_area", std::uint32_t{64});
        if (analysed.index == 5) configuration.Set("label", "other");
    }));
    RunPlan plan{.source = source,
                 .analyse = [&](auto const& frame, auto& result) { return algorithm.Process(frame, result); },
                 .sinks = std::move(sinks)};
    EXPECT_FALSE(host::Run(plan).error);
    EXPECT_THAT(objects, ElementsAre(1, 1, 0, 0, 1, 1, 1, 1));
    EXPECT_THAT(labels, ElementsAre("bright", "bright", "", "", "bright", "bright", "other", "other"));
}

}  // namespace
}  // namespace qel::host
