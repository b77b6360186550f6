#include "reconnecting_source.hpp"

#include <deque>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"

namespace qel::host {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;

/// One connection: what each of its reads gives; opening throws the first step if that is an error.
struct Step {
    enum class Kind { Frame, End, Lost, Silent, Broken } kind;
    std::chrono::milliseconds time{0};
    unsigned int width = 8;
};
using Connection = std::vector<Step>;

constexpr Step End{Step::Kind::End};
constexpr Step Lost{Step::Kind::Lost};
constexpr Step Silent{Step::Kind::Silent};
constexpr Step Broken{Step::Kind::Broken};
constexpr Step FrameAt(std::chrono::milliseconds time) { return {Step::Kind::Frame, time}; }

class ScriptedSource final : public FrameSource {
public:
    explicit ScriptedSource(Connection steps) : steps_(steps.begin(), steps.end()) {
        if (steps_.front().kind != Step::Kind::Frame) (void)Read();
    }

    std::optional<Frame> Read() override {
        Step const step = steps_.front();
        if (steps_.size() > 1) steps_.pop_front();
        switch (step.kind) {
            case Step::Kind::Lost:
                throw LostError("the line is cut.");
            case Step::Kind::Silent:
                throw LostError("not a sound", true);
            case Step::Kind::Broken:
                throw Error("no such codec");
            case Step::Kind::End:
                return std::nullopt;
            case Step::Kind::Frame:
                break;
        }
        media::video::FrameBase<void> const frame(media::ColourFormat::Grey8, step.width, 8,
                                                  media::TimePoint(step.time), {});
        Frame::Planes planes{};
        auto const& plane = frame.GetPlane(0);
        planes[0] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
        return Frame(planes, frame.GetColourFormat(), frame.GetSize(), frame.GetTimestamp(), frame.GetRotation(),
                     frame.GetRef(), frame.GetUnref());
    }

    std::optional<std::chrono::nanoseconds> GetGap() const override { return std::nullopt; }
    Losses GetLosses() const override { return {.droppedFrames = 3}; }
    geometry::Dimension<unsigned int, 2> GetFrameSize() const noexcept override { return {8, 8}; }
    double GetFrameRate() const noexcept override { return 25; }
    bool IsLive() const noexcept override { return true; }
    std::optional<std::uint64_t> GetExpectedFrames() const noexcept override { return 99; }
    std::optional<std::string> GetWarning() const override { return "odd"; }

private:
    std::deque<Step> steps_;
};

class Reconnecting : public testing::Test {
protected:
    /// Opens the connections one after the other; once they are used up, the source is told to stop.
    ReconnectingSource Make(std::vector<Connection> connections) {
        connections_.assign(connections.begin(), connections.end());
        return {"camera",
                [this]() -> std::unique_ptr<FrameSource> {
                    ++opened;
                    if (connections_.empty()) {
                        stop = true;
                        throw LostError("nobody there");
                    }
                    Connection const next = connections_.front();
                    connections_.pop_front();
                    return std::make_unique<ScriptedSource>(next);
                },
                policy, [this] { return stop; },
                [this](SourceNews news, std::string const& line) {
                    said.push_back(line);
                    told.push_back(news);
                }};
    }

    struct Seen {
        std::vector<std::chrono::nanoseconds> times;
        std::vector<std::size_t> gaps;
    };

    /// Reads to the end; says which frames came after a gap.
    static Seen ReadAll(ReconnectingSource& source) {
        Seen seen;
        while (auto const frame = source.Read()) {
            if (source.GetGap()) seen.gaps.push_back(seen.times.size());
            seen.times.push_back(frame->GetTimestamp().time_since_epoch());
        }
        return seen;
    }

    ReconnectPolicy policy{.firstWait = 1ms, .longestWait = 4ms, .goodFrames = 3};
    std::vector<std::string> said;
    std::vector<SourceNews> told;
    int opened = 0;
    bool stop = false;

private:
    std::deque<Connection> connections_;
};

TEST_F(Reconnecting, GoesOnAfterEveryKindOfLoss) {
    auto source = Make({{FrameAt(0ms), FrameAt(40ms), Lost},
                        {FrameAt(0ms), Silent},
                        {FrameAt(7ms), End},
                        {FrameAt(9ms), Broken},
                        {FrameAt(0ms), FrameAt(40ms), End}});
    EXPECT_EQ(source.GetFrameSize().width, 8U);
    EXPECT_EQ(source.GetFrameRate(), 25);
    EXPECT_TRUE(source.IsLive());
    EXPECT_FALSE(source.GetExpectedFrames());
    EXPECT_FALSE(source.GetWarning());
    Seen const seen = ReadAll(source);
    ASSERT_EQ(seen.times.size(), 7U);
    EXPECT_THAT(seen.gaps, ElementsAre(2, 3, 4, 5));
    for (std::size_t i = 1; i < seen.times.size(); ++i) EXPECT_GT(seen.times[i], seen.times[i - 1]);
    EXPECT_EQ(seen.times[6] - seen.times[5], 40ms);
    Losses const losses = source.GetLosses();
    EXPECT_EQ(losses.interruptions, 5U);
    EXPECT_EQ(losses.stalls, 1U);
    EXPECT_EQ(losses.returns, 4U);
    EXPECT_EQ(losses.attempts, 5U);
    EXPECT_EQ(losses.droppedFrames, 15U);
    EXPECT_GT(losses.away, 0ns);
    EXPECT_THAT(
        said,
        ElementsAre(MatchesRegex("the line is cut; trying again in 0.0 s"), MatchesRegex("'camera' is back after .* s"),
                    MatchesRegex("not a sound; trying again in .* s"), MatchesRegex("'camera' is back after .* s"),
                    MatchesRegex("'camera' ended; trying again in .* s"), MatchesRegex("'camera' is back after .* s"),
                    MatchesRegex("no such codec; trying again in .* s"), MatchesRegex("'camera' is back after .* s"),
                    MatchesRegex("'camera' ended; trying again in .* s")));
    using enum SourceNews;
    EXPECT_THAT(told, ElementsAre(Lost, Back, Lost, Back, Lost, Back, Lost, Back, Lost));
}

TEST_F(Reconnecting, TimesGoOnByTheTimeThatItWasAway) {
    auto source = Make({{FrameAt(5000ms), Lost}, {Lost}, {Lost}, {FrameAt(100ms), End}});
    auto const first = source.Read()->GetTimestamp();
    EXPECT_EQ(first.time_since_epoch(), 5000ms);
    EXPECT_FALSE(source.GetGap());
    auto const second = source.Read();
    ASSERT_TRUE(second && source.GetGap());
    EXPECT_EQ(second->GetTimestamp() - first, *source.GetGap());
    EXPECT_EQ(source.GetLosses().away, *source.GetGap());
    EXPECT_EQ(source.GetLosses().interruptions, 1U);
    EXPECT_EQ(source.GetLosses().attempts, 3U);
    EXPECT_EQ(source.GetLosses().returns, 1U);
}

TEST_F(Reconnecting, WaitsForASourceThatIsNotThereYet) {
    auto source = Make({{Lost}, {Silent}, {FrameAt(3ms), FrameAt(5ms), End}});
    Seen const seen = ReadAll(source);
    EXPECT_THAT(seen.times, ElementsAre(3ms, 5ms));
    EXPECT_TRUE(seen.gaps.empty());
    EXPECT_EQ(source.GetLosses().interruptions, 1U);
    EXPECT_EQ(source.GetLosses().returns, 0U);
}

TEST_F(Reconnecting, DoesNotTryAgainWhatWillNotPass) {
    EXPECT_THROW(Make({{Broken}, {FrameAt(0ms)}}), Error);
    EXPECT_EQ(opened, 1);
    opened = 0;
    EXPECT_THROW(Make({{Lost}, {Broken}, {FrameAt(0ms)}}), Error);
    EXPECT_EQ(opened, 2);
}

TEST_F(Reconnecting, TriesAgainWhateverIsWrongOnceItHasWorked) {
    auto source = Make({{FrameAt(0ms), Lost}, {Broken}, {FrameAt(0ms), End}});
    EXPECT_EQ(ReadAll(source).times.size(), 2U);
}

TEST_F(Reconnecting, GivesUpAfterSoManyAttemptsInARow) {
    policy.attempts = 2;
    auto const errorOf = [&](std::vector<Connection> const& connections) -> std::string {
        opened = 0;
        try {
            auto source = Make(connections);
            ReadAll(source);
        } catch (Error const& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(errorOf({{Lost}, {Lost}, {Lost}, {FrameAt(0ms)}}),
              "gave up after 2 attempts to reconnect: the line is cut.");
    EXPECT_EQ(opened, 3);
    EXPECT_EQ(errorOf({{FrameAt(0ms), End}, {Silent}, {Lost}, {FrameAt(0ms)}}),
              "gave up after 2 attempts to reconnect: the line is cut.");
    EXPECT_EQ(opened, 3);
    // A connection that gives less than three frames is no success.
    EXPECT_EQ(errorOf({{FrameAt(0ms), End}, {FrameAt(0ms), FrameAt(1ms), End}, {FrameAt(0ms), End}, {FrameAt(0ms)}}),
              "gave up after 2 attempts to reconnect: 'camera' ended");
    Connection const good{FrameAt(0ms), FrameAt(1ms), FrameAt(2ms), End};
    EXPECT_EQ(errorOf({good, {Lost}, good, {Lost}, good, {Lost}, good}), "no error");
}

TEST_F(Reconnecting, WaitsNoLongerThanItIsWanted) {
    policy.firstWait = policy.longestWait = std::chrono::hours(24);
    ReconnectingSource source(
        "camera", []() -> std::unique_ptr<FrameSource> { throw LostError("nobody there"); }, policy,
        [this] { return stop; }, [this](SourceNews, std::string const&) { stop = true; });
    EXPECT_FALSE(source.Read());
    EXPECT_EQ(source.GetFrameSize().width, 0U);
}

TEST_F(Reconnecting, EndsAtOnceWhenItIsToldTo) {
    auto source = Make({{FrameAt(0ms), FrameAt(1ms)}});
    EXPECT_TRUE(source.Read());
    stop = true;
    EXPECT_FALSE(source.Read());
    EXPECT_TRUE(said.empty());
    EXPECT_EQ(source.GetLosses().interruptions, 0U);
}

}  // namespace
}  // namespace qel::host
