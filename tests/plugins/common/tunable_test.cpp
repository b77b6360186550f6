#include "common/tunable.hpp"

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"

namespace qel::plugin {
namespace {

using configuration::Range;
using configuration::node::Map;

struct Settings {
    int first = 3;
    int second = -3;
};

/// An algorithm that does nothing.
class Idle final : public algorithm::video::passthrough::Algorithm, public Tunable<Settings> {
public:
    Idle() : Algorithm(hash::MurmurThree32("test.Idle"), {media::ColourFormat::Grey8}) {}
    void Process(media::video::FrameBase<void const> const& /*frame*/, algorithm::video::Result& /*result*/) override {}
};

TEST(Tunable, BeginsWithTheDefaultsAndKeepsWhatIsChanged) {
    Idle idle;
    EXPECT_EQ(idle.GetSettings().first, 3);
    idle.ChangeSettings([](Settings& settings) { settings.first = 4; });
    EXPECT_EQ(idle.GetSettings().first, 4);
    EXPECT_EQ(idle.GetSettings().second, -3);
}

TEST(Tunable, CanBeChangedAfterAChangeThatFailed) {
    Idle idle;
    EXPECT_THROW(idle.ChangeSettings([](Settings&) { throw std::runtime_error("no"); }), std::runtime_error);
    idle.ChangeSettings([](Settings& settings) { settings.first = 5; });
    EXPECT_EQ(idle.GetSettings().first, 5);
}

TEST(Tunable, ShowsWholeChangesToOtherThreads) {
    Idle idle;
    std::thread writer([&] {
        for (int i = 0; i < 10000; ++i) {
            idle.ChangeSettings([i](Settings& settings) {
                settings.first = i;
                settings.second = -i;
            });
        }
    });
    int torn = 0;
    for (Settings now = idle.GetSettings(); now.first != 9999; now = idle.GetSettings()) {
        if (now.first != -now.second) ++torn;
    }
    writer.join();
    EXPECT_EQ(torn, 0);
}

TEST(MakeSetting, IsAPropertyWithTheFieldsDefaultThatSetsTheField) {
    auto const property = MakeSetting<Idle>("first", "The first one", Range{1, 9}, &Settings::first);
    EXPECT_EQ(property.name, "first");
    auto const map = Map::Make("Idle");
    map->Schema(property.schemas);
    auto const node = map->Find("first");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetDescription(), "The first one");
    EXPECT_EQ(node->As<configuration::node::Primitive<int>>().Get(), 3);
    EXPECT_THROW(map->Set("first", 10), std::out_of_range);
    map->Set("first", 9);
    Idle idle;
    property.setter(static_cast<algorithm::video::Algorithm*>(&idle), *node);
    EXPECT_EQ(idle.GetSettings().first, 9);
}

}  // namespace
}  // namespace qel::plugin
