#include "mqtt/onvif.hpp"

#include <gtest/gtest.h>

namespace qel::serve::mqtt {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

constexpr system_clock::time_point Time{milliseconds(1'772'366'400'007)};

TEST(Onvif, PutsALineIntoTheFormOfAFrame) {
    EXPECT_EQ(
        MakeOnvifFrame("gate", Time,
                       R"({"frame":1,"timestamp":0,"source":"a.avi","resolution":{"width":8,"height":8},"objects":[)"
                       R"({"detection":{"bounding_box":{"x_min":0.25,"y_min":0.125,"x_max":0.3125,"y_max":0.25},)"
                       R"("confidence":0.92,"label":"motion"},"x":2,"y":1,"w":1,"h":1,"area":1},)"
                       R"({"detection":{"bounding_box":{"x_min":0,"y_min":0,"x_max":1,"y_max":1},)"
                       R"("confidence":1,"label":"a \"b\""},"x":0,"y":0,"w":8,"h":8,"area":64}]})"),
        R"({"Frame":[{"@UtcTime":"2026-03-01T12:00:00.007Z","@Source":"gate","Object":[)"
        R"({"@ObjectId":"0","Appearance":{"Shape":{)"
        R"("BoundingBox":{"@left":"-0.5","@top":"0.75","@right":"-0.375","@bottom":"0.5"},)"
        R"("CenterOfGravity":{"@x":"-0.4375","@y":"0.625"}},)"
        R"("Class":{"Type":[{"@Likelihood":"0.92","#text":"motion"}]}}},)"
        R"({"@ObjectId":"1","Appearance":{"Shape":{)"
        R"("BoundingBox":{"@left":"-1","@top":"1","@right":"1","@bottom":"-1"},)"
        R"("CenterOfGravity":{"@x":"0","@y":"0"}},)"
        R"("Class":{"Type":[{"@Likelihood":"1","#text":"a \"b\""}]}}}]}]})");
}

TEST(Onvif, KeepsAFrameWithoutObjects) {
    EXPECT_EQ(MakeOnvifFrame("gate", Time, R"({"frame":1,"objects":[]})"),
              R"({"Frame":[{"@UtcTime":"2026-03-01T12:00:00.007Z","@Source":"gate","Object":[]}]})");
}

TEST(Onvif, LeavesOutALikelihoodThatIsNoNumber) {
    EXPECT_EQ(
        MakeOnvifFrame("gate", Time,
                       R"({"objects":[{"detection":{"bounding_box":{"x_min":0.5,"y_min":0.5,"x_max":0.5,"y_max":0.5},)"
                       R"("confidence":null,"label":""}}]})"),
        R"({"Frame":[{"@UtcTime":"2026-03-01T12:00:00.007Z","@Source":"gate","Object":[)"
        R"({"@ObjectId":"0","Appearance":{"Shape":{)"
        R"("BoundingBox":{"@left":"0","@top":"0","@right":"0","@bottom":"0"},)"
        R"("CenterOfGravity":{"@x":"0","@y":"0"}},"Class":{"Type":[{"#text":""}]}}}]}]})");
}

TEST(Onvif, MakesNothingOfOtherLines) {
    for (char const* line : {"", "x", "[]", "{}", R"({"objects":3})", R"({"objects":[{}]})",
                             R"({"objects":[{"detection":{"bounding_box":{},"confidence":1,"label":"x"}}]})"}) {
        EXPECT_EQ(MakeOnvifFrame("gate", Time, line), "") << line;
    }
}

}  // namespace
}  // namespace qel::serve::mqtt
