// The motion and the privacy-mask plug-ins in one run, reconfigured by another thread while frames flow.

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "algorithm_chain.hpp"
#include "catalogue.hpp"
#include "plugins.hpp"
#include "plugins/motion/moving_box.hpp"
#include "qel/algorithm/video/properties.hpp"
#include "qel/algorithm/video/registry/get.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "result_line.hpp"

namespace qel::host {
namespace {

namespace video = algorithm::video;
using configuration::node::Map;
using configuration::node::Primitive;

constexpr unsigned int Frames = 200, FirstChange = 30, FramesAChange = 8;
constexpr unsigned int Changes = (Frames - FirstChange) / FramesAChange;

/// What a frame showed: the zones that are black in it, and how many objects its line of JSON holds.
struct Seen {
    std::string zones;
    std::string objects;
};

/// A value that took over while frames flowed: frames before `before` were done, frames from `after` on had not begun.
struct Change {
    std::string value;
    unsigned int before = 0, after = 0;
};

/// Counts frames for both threads, and lets neither run away.
class Clock {
public:
    void Begin() { Count(begun_); }
    void End() { Count(ended_); }
    void FinishChange() { Count(changes_); }

    unsigned int GetBegun() const { return Read(begun_); }
    unsigned int GetEnded() const { return Read(ended_); }

    /// So that at least one frame comes after each change, and none before its time.
    void WaitForChanges(unsigned int count) { Wait(changes_, count); }
    void WaitForFrames(unsigned int count) { Wait(begun_, count); }

private:
    void Count(unsigned int& counter) {
        std::lock_guard<std::mutex> const lock(mutex_);
        ++counter;
        changed_.notify_all();
    }
    unsigned int Read(unsigned int const& counter) const {
        std::lock_guard<std::mutex> const lock(mutex_);
        return counter;
    }
    void Wait(unsigned int const& counter, unsigned int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return counter >= count; });
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    unsigned int begun_ = 0, ended_ = 0, changes_ = 0;
};

/// An algorithm's properties, tied to the nodes of its configuration.
video::Properties MakeProperties(AlgorithmChain& chain, std::size_t index) {
    auto const algorithm = chain.GetAlgorithm(index);
    std::vector<property::Schema> schemas;
    {
        auto const registry = video::registry::Get().GetMap();
        auto const& properties = registry->at(algorithm->GetTypeNameId()).GetProperties();
        schemas = std::vector<property::Schema>(properties.begin(), properties.end());
    }
    property::Binder binder(chain.GetConfiguration(index).GetPtr<Map>());
    return {algorithm, binder, std::move(schemas)};
}

class TwoAlgorithms : public testing::Test {
protected:
    AlgorithmChain Make() {
        EXPECT_EQ(LoadPlugins().problems, std::vector<system::plugin::Problem>());
        return {runtime_,
                {FindAlgorithm("motion"), FindAlgorithm("privacy_mask")},
                {{"mode", "blank"}, {"zones", Zone('A')}, {"motion.minimum_area", "50"}}};
    }

    /// Two corners of the picture where nothing moves.
    static std::string Zone(char name) { return name == 'A' ? "1,1 5,1 5,5 1,5" : "90,1 94,1 94,5 90,5"; }

    Seen Show(unsigned int index) {
        unsigned int const x = 8 + index * 23 % 70, y = 12 + index * 17 % 40;
        auto const frame = index < FirstChange - 5 ? film_.Empty() : film_.Show(x, y, 10, 10);
        video::Result result;
        auto const shown = chain_.Process(frame, result);
        auto const black = [&](unsigned int column) {
            auto const& plane = shown.GetPlane(0);
            return static_cast<std::uint8_t const*>(plane.GetBuffer())[3 * plane.GetStride() + column] == 0;
        };
        Seen seen;
        if (black(3)) seen.zones += 'A';
        if (black(92)) seen.zones += 'B';
        std::string const line = MakeResultLine("film", {index, shown, result});
        std::size_t objects = 0;
        for (std::size_t at = 0; (at = line.find("\"motion\"", at)) != std::string::npos; ++at) ++objects;
        seen.objects = std::to_string(objects);
        return seen;
    }

    /// Runs on the other thread.
    void ChangeEverything() {
        auto& minimumArea = motion_.GetProperty("minimum_area");
        auto& zones = mask_.GetProperty("zones");
        for (unsigned int i = 0; i < Changes; ++i) {
            clock_.WaitForFrames(FirstChange + i * FramesAChange);
            // Zones and areas in turn, each to and fro; every third time through the node.
            bool const isZone = i % 2 == 0, other = i / 2 % 2 == 0, throughNode = i / 2 % 3 == 1;
            std::string const zone(1, other ? 'B' : 'A');
            std::uint32_t const area = other ? 101 : 100;
            Change change{isZone ? zone : std::string(other ? "0" : "1"), clock_.GetEnded(), 0};
            if (isZone && throughNode) chain_.GetConfiguration(1).Set("zones", Zone(zone[0]));
            if (isZone && !throughNode) zones.Set(Zone(zone[0]));
            if (!isZone && throughNode) chain_.GetConfiguration(0).Set("minimum_area", area);
            if (!isZone && !throughNode) minimumArea.Set(area);
            change.after = clock_.GetBegun();
            // Whichever was set, the other one has followed.
            if (isZone) {
                EXPECT_EQ(zones.Get<std::string>(), Zone(zone[0]));
                EXPECT_EQ(chain_.GetConfiguration(1).Find("zones")->As<Primitive<std::string>>().Get(), Zone(zone[0]));
            } else {
                EXPECT_EQ(minimumArea.Get<std::uint32_t>(), area);
                EXPECT_EQ(chain_.GetConfiguration(0).Find("minimum_area")->As<Primitive<std::uint32_t>>().Get(), area);
            }
            (isZone ? zoneChanges_ : objectChanges_).push_back(change);
            clock_.FinishChange();
        }
    }

    static void Check(std::vector<Seen> const& seen, std::string Seen::*what, std::vector<Change> const& changes) {
        for (std::size_t i = 1; i < changes.size(); ++i) {
            Change const& last = changes[i - 1];
            Change const& next = changes[i];
            EXPECT_NE(last.value, next.value) << "each change can be seen";
            EXPECT_LT(last.after, next.before) << "by at least one frame";
            for (std::size_t frame = last.after; frame < next.before; ++frame) {
                EXPECT_EQ(seen[frame].*what, last.value) << "frame " << frame;
            }
            for (std::size_t frame = next.before; frame < next.after; ++frame) {
                EXPECT_TRUE(seen[frame].*what == last.value || seen[frame].*what == next.value) << "frame " << frame;
            }
        }
    }

    motion::MovingBox film_;
    Runtime runtime_;
    AlgorithmChain chain_ = Make();
    video::Properties motion_ = MakeProperties(chain_, 0);
    video::Properties mask_ = MakeProperties(chain_, 1);
    Clock clock_;
    std::vector<Change> zoneChanges_{{"A", 0, 0}};
    std::vector<Change> objectChanges_{{"1", 0, FirstChange - 5}};
};

TEST_F(TwoAlgorithms, ShowEachChangeFromTheNextFrameOnInPixelsAndJson) {
    std::vector<Seen> seen;
    std::thread other([this] { ChangeEverything(); });
    for (unsigned int i = 0; i < Frames; ++i) {
        clock_.Begin();
        seen.push_back(Show(i));
        clock_.End();
        // The change that was due at this frame, if there is one, is over before it is the next one's turn.
        if (i >= FirstChange && (i - FirstChange) % FramesAChange == FramesAChange - 3) {
            clock_.WaitForChanges(std::min((i - FirstChange) / FramesAChange + 1, Changes));
        }
    }
    other.join();
    EXPECT_EQ(zoneChanges_.size() + objectChanges_.size(), Changes + 2);
    zoneChanges_.push_back({zoneChanges_.back().value == "A" ? "B" : "A", Frames, Frames});
    objectChanges_.push_back({objectChanges_.back().value == "0" ? "1" : "0", Frames, Frames});
    Check(seen, &Seen::zones, zoneChanges_);
    Check(seen, &Seen::objects, objectChanges_);
    EXPECT_EQ(chain_.GetCopies(), Frames);
}

TEST_F(TwoAlgorithms, MaskWhatMovesInTheVeryFrameInWhichItIsFound) {
    chain_.GetConfiguration(1).Set("mask_motion", std::string("shapes"));
    chain_.GetConfiguration(1).Set("motion_margin", std::uint32_t{3});
    for (unsigned int i = 0; i < 25; ++i) Show(i);
    for (unsigned int i = 0; i < 20; ++i) {
        unsigned int const x = 8 + i * 23 % 70, y = 12 + i * 17 % 40;
        video::Result result;
        auto const shown = chain_.Process(film_.Show(x, y, 10, 10), result);
        auto const& plane = shown.GetPlane(0);
        for (unsigned int row = 0; row < shown.GetHeight(); ++row) {
            auto const* const pixels =
                static_cast<std::uint8_t const*>(plane.GetBuffer()) + row * static_cast<std::size_t>(plane.GetStride());
            for (unsigned int column = 0; column < shown.GetWidth(); ++column) {
                bool const hidden = (column >= 1 && column <= 5 && row >= 1 && row <= 5) ||
                                    (column + 3 >= x && column < x + 13 && row + 3 >= y && row < y + 13);
                ASSERT_EQ(pixels[column], hidden ? 0 : 80) << "frame " << i << ", " << column << ", " << row;
            }
        }
    }
}

}  // namespace
}  // namespace qel::host
