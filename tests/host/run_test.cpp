#include "run.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"
#include "video_source.hpp"
#include "working_frame.hpp"

namespace qel::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Notes what it is given; throws when it is told to.
class NotingSink final : public FrameSink {
public:
    struct Notes {
        std::vector<std::uint64_t> frames;
        int finished = 0;
    };

    NotingSink(Notes& notes, std::uint64_t failAt, bool failAtEnd)
        : notes_(notes), failAt_(failAt), failAtEnd_(failAtEnd) {}

    std::string GetStage() const override { return "note"; }
    void Take(AnalysedFrame const& analysed) override {
        if (analysed.index == failAt_) throw Error("full");
        notes_.frames.push_back(analysed.index);
    }
    void Finish() override {
        ++notes_.finished;
        if (failAtEnd_) throw Error("not finished");
    }

private:
    Notes& notes_;
    std::uint64_t failAt_;
    bool failAtEnd_;
};

class Run : public testing::Test {
protected:
    static constexpr std::uint64_t Never = ~std::uint64_t{0};

    Run() {
        test::WriteMovingSquare(directory / "video.mkv", {.frames = 6});
        source = std::make_unique<VideoSource>(Locate(directory / "video.mkv"), std::vector{media::ColourFormat::Grey8},
                                               [this] { return stop; });
    }

    void AddSink(NotingSink::Notes& notes, std::uint64_t failAt = Never, bool failAtEnd = false) {
        sinks.push_back(std::make_unique<NotingSink>(notes, failAt, failAtEnd));
    }

    RunReport Start() {
        RunPlan plan{.source = *source,
                     .analyse =
                         [this](VideoSource::Frame const& frame, algorithm::video::Result& result) {
                             if (analysed == failAnalysisAt) throw Error("lost");
                             result.objects.resize(analysed++);
                             return frame;
                         },
                     .sinks = std::move(sinks),
                     .maxFrames = maxFrames,
                     .progress = [this](std::uint64_t done) { progress.push_back(done); }};
        return host::Run(plan);
    }

    static std::string ErrorOf(RunReport const& report) {
        try {
            if (report.error) std::rethrow_exception(report.error);
        } catch (std::exception const& error) {
            return error.what();
        }
        return "";
    }

    test::TemporaryDirectory directory;
    std::unique_ptr<VideoSource> source;
    std::vector<std::unique_ptr<FrameSink>> sinks;
    std::optional<std::uint64_t> maxFrames;
    std::uint64_t analysed = 0;
    std::uint64_t failAnalysisAt = Never;
    std::vector<std::uint64_t> progress;
    bool stop = false;
};

TEST_F(Run, GivesEveryFrameToEverySinkInOrder) {
    NotingSink::Notes first, second;
    AddSink(first);
    AddSink(second);
    RunReport const report = Start();
    EXPECT_EQ(ErrorOf(report), "");
    EXPECT_EQ(report.frames, 6U);
    EXPECT_EQ(report.objects, 0U + 1 + 2 + 3 + 4 + 5);
    EXPECT_THAT(first.frames, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_EQ(second.frames, first.frames);
    EXPECT_EQ(first.finished, 1);
    EXPECT_EQ(second.finished, 1);
    EXPECT_THAT(progress, ElementsAre(1, 2, 3, 4, 5, 6));
    ASSERT_EQ(report.stages.size(), 4U);
    EXPECT_EQ(report.stages[0].stage, "decode");
    EXPECT_EQ(report.stages[1].stage, "algorithm");
    EXPECT_EQ(report.stages[2].stage, "note");
    EXPECT_GT(report.elapsed, report.stages[0].time + report.stages[1].time);
}

TEST_F(Run, StopsAtTheLimitAndWhenItIsTold) {
    NotingSink::Notes notes;
    AddSink(notes);
    maxFrames = 2;
    EXPECT_EQ(Start().frames, 2U);
    AddSink(notes);
    maxFrames = 0;
    EXPECT_EQ(Start().frames, 0U);
    AddSink(notes);
    maxFrames.reset();
    stop = true;
    RunReport const report = Start();
    EXPECT_EQ(report.frames, 0U);
    EXPECT_EQ(ErrorOf(report), "");
    EXPECT_EQ(notes.finished, 3);
}

TEST_F(Run, FinishesAllSinksButTheOneThatFailed) {
    NotingSink::Notes before, failing, after;
    AddSink(before);
    AddSink(failing, 2);
    AddSink(after);
    RunReport const report = Start();
    EXPECT_EQ(ErrorOf(report), "full");
    EXPECT_EQ(report.frames, 2U);
    EXPECT_THAT(before.frames, ElementsAre(0, 1, 2));
    EXPECT_THAT(failing.frames, ElementsAre(0, 1));
    EXPECT_THAT(after.frames, ElementsAre(0, 1));
    EXPECT_EQ(before.finished, 1);
    EXPECT_EQ(failing.finished, 0);
    EXPECT_EQ(after.finished, 1);
}

TEST_F(Run, FinishesTheSinksWhenTheAnalysisFailsAndTellsTheFirstError) {
    NotingSink::Notes first, second;
    AddSink(first, Never, true);
    AddSink(second);
    failAnalysisAt = 3;
    RunReport const report = Start();
    EXPECT_EQ(ErrorOf(report), "lost");
    EXPECT_EQ(report.frames, 3U);
    EXPECT_EQ(first.finished, 1);
    EXPECT_EQ(second.finished, 1);
}

TEST_F(Run, TellsTheErrorOfASinkThatCannotBeFinished) {
    NotingSink::Notes notes;
    AddSink(notes, Never, true);
    RunReport const report = Start();
    EXPECT_EQ(ErrorOf(report), "not finished");
    EXPECT_EQ(report.frames, 6U);
}

/// Gives frames of given widths, some after a gap.
class UnsteadySource final : public FrameSource {
public:
    struct Step {
        unsigned int width;
        std::optional<std::chrono::nanoseconds> gap{};
    };

    explicit UnsteadySource(std::vector<Step> steps) : steps_(std::move(steps)) {}

    std::optional<Frame> Read() override {
        if (next_ == steps_.size()) return std::nullopt;
        pixels_ =
            media::video::FrameBase<void>(media::ColourFormat::Grey8, steps_[next_++].width, 8, media::TimePoint(), {});
        return MakeReadOnly(pixels_);
    }
    std::optional<std::chrono::nanoseconds> GetGap() const override { return steps_[next_ - 1].gap; }
    Losses GetLosses() const override { return {.interruptions = 2, .away = std::chrono::seconds(3)}; }
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override { return {8, 8}; }
    double GetFrameRate() const noexcept override { return 0; }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return std::nullopt; }
    std::optional<std::string> GetWarning() const override { return std::nullopt; }

private:
    std::vector<Step> steps_;
    std::size_t next_ = 0;
    media::video::FrameBase<void> pixels_;
};

/// Notes the gaps that it is told of.
class GapSink final : public FrameSink {
public:
    explicit GapSink(std::vector<std::uint64_t>& frames) : frames_(frames) {}

    std::string GetStage() const override { return "gap"; }
    void Take(AnalysedFrame const& analysed) override {
        if (analysed.gap) frames_.push_back(analysed.index);
    }
    void Finish() override {}

private:
    std::vector<std::uint64_t>& frames_;
};

TEST(RunOfAnUnsteadySource, StartsAnewAfterAGapAndWithANewSize) {
    using namespace std::chrono_literals;
    UnsteadySource unsteady({{8}, {8}, {8, 5ns}, {8}, {16}, {16}, {8, 1ns}, {8}});
    std::vector<std::size_t> startedAnewBefore;
    std::size_t analysed = 0;
    std::vector<std::uint64_t> gaps;
    RunPlan plan{.source = unsteady,
                 .analyse =
                     [&](FrameSource::Frame const& frame, algorithm::video::Result&) {
                         ++analysed;
                         return frame;
                     },
                 .sinks = {},
                 .startAnew = [&] { startedAnewBefore.push_back(analysed); }};
    plan.sinks.push_back(std::make_unique<GapSink>(gaps));
    RunReport const report = host::Run(plan);
    EXPECT_EQ(report.frames, 8U);
    EXPECT_THAT(startedAnewBefore, ElementsAre(2, 4, 6));
    EXPECT_THAT(gaps, ElementsAre(2, 6));
    EXPECT_EQ(report.losses.interruptions, 2U);
    EXPECT_EQ(report.losses.away, 3s);
}

TEST(RunOfAnUnsteadySource, AsksThePaceBeforeEachFrameAndEndsWhenItSaysSo) {
    UnsteadySource endless(std::vector<UnsteadySource::Step>(8, {8}));
    std::vector<std::string> steps;
    RunPlan plan{.source = endless,
                 .analyse =
                     [&](FrameSource::Frame const& frame, algorithm::video::Result&) {
                         steps.push_back("analyse");
                         return frame;
                     },
                 .sinks = {},
                 .pace =
                     [&](FrameSource::Frame const& frame) {
                         EXPECT_EQ(frame.GetWidth(), 8U);
                         steps.push_back("pace");
                         return steps.size() < 5;
                     }};
    EXPECT_EQ(host::Run(plan).frames, 2U);
    EXPECT_THAT(steps, ElementsAre("pace", "analyse", "pace", "analyse", "pace"));
}

TEST(RunOfAnUnsteadySource, TellsTheTimeOfEachStageForEachFrame) {
    UnsteadySource two({{8}, {8}});
    NotingSink::Notes notes;
    std::vector<std::string> stages;
    std::chrono::nanoseconds total{0};
    RunPlan plan{.source = two,
                 .analyse = [](FrameSource::Frame const& frame, algorithm::video::Result&) { return frame; },
                 .sinks = {},
                 .timed =
                     [&](std::string const& stage, std::chrono::nanoseconds time) {
                         stages.push_back(stage);
                         total += time;
                     },
                 .firstIndex = 40};
    plan.sinks.push_back(std::make_unique<NotingSink>(notes, ~std::uint64_t{0}, false));
    RunReport const report = host::Run(plan);
    EXPECT_THAT(stages, ElementsAre("decode", "algorithm", "note", "decode", "algorithm", "note", "decode", "note"))
        << "the last ones are the end of the source and of the sink";
    EXPECT_EQ(total, report.stages[0].time + report.stages[1].time + report.stages[2].time);
    EXPECT_THAT(notes.frames, ElementsAre(40, 41));
}

TEST(Summarise, TellsWhatWasLost) {
    using namespace std::chrono_literals;
    RunReport report;
    report.losses = {.interruptions = 3, .stalls = 1, .returns = 2, .attempts = 7, .away = 12340ms, .droppedFrames = 5};
    EXPECT_THAT(Summarise(report, "c"), testing::EndsWith("  lost: 3 interruptions (1 stall), back 2 times after 7 "
                                                          "attempts, 12.34 s away, 5 frames dropped\n"));
    report.losses = {.interruptions = 1, .attempts = 1, .away = 500ms};
    EXPECT_THAT(Summarise(report, "c"), testing::EndsWith("\n  lost: 1 interruption (0 stalls), back 0 times after 1 "
                                                          "attempt, 0.50 s away\n"));
    report.losses = {.droppedFrames = 1};
    EXPECT_THAT(Summarise(report, "c"), testing::EndsWith("\n  lost: 1 frame dropped\n"));
}

TEST(Summarise, CountsAndRates) {
    using namespace std::chrono_literals;
    RunReport report;
    report.frames = 100;
    report.objects = 1;
    report.elapsed = 2s;
    report.stages = {{"decode", 500ms}, {"algorithm", 250ms}, {"write", 10ms}};
    EXPECT_EQ(Summarise(report, "a.avi"),
              "a.avi: 100 frames, 1 object, 2.00 s, 50.0 frames/s\n"
              "  decode 0.500 s, algorithm 0.250 s (400.0 frames/s), write 0.010 s\n");
    report = RunReport();
    report.frames = 1;
    report.stages = {{"decode", 0ns}, {"algorithm", 0ns}};
    EXPECT_EQ(Summarise(report, "b"),
              "b: 1 frame, 0 objects, 0.00 s, - frames/s\n  decode 0.000 s, algorithm 0.000 s (- frames/s)\n");
}

}  // namespace
}  // namespace qel::host
