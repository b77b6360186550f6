#include "stream_spec.hpp"

#include <gtest/gtest.h>

namespace qel::serve {
namespace {

TEST(StreamSpec, IsStartedAnewForAllButItsSettings) {
    StreamSpec const spec{.id = "gate", .source = "/gate.avi", .algorithms = {"motion"}};
    StreamSpec other = spec;
    EXPECT_FALSE(spec.NeedsRestart(other));
    other.settings.emplace("motion", nullptr);
    EXPECT_FALSE(spec.NeedsRestart(other));

    other = spec, other.source = "/door.avi";
    EXPECT_TRUE(spec.NeedsRestart(other));
    other = spec, other.loop = true;
    EXPECT_TRUE(spec.NeedsRestart(other));
    other = spec, other.enabled = false;
    EXPECT_TRUE(spec.NeedsRestart(other));
    other = spec, other.algorithms.push_back("privacy_mask");
    EXPECT_TRUE(spec.NeedsRestart(other));
    other = spec, other.calibration = "/gate.json";
    EXPECT_TRUE(spec.NeedsRestart(other));
}

}  // namespace
}  // namespace qel::serve
