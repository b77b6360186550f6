#include "run.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

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
