#include "calibration/object_measurer.hpp"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qel::host::calibration {
namespace {

using algorithm::video::Object;
using algorithm::video::Result;
using testing::ElementsAre;

constexpr Mounting<double> Camera{16.877, 2.224, 7.066, 27.324};

Result MakeResult(std::vector<geometry::Rectangle<unsigned int>> const& boxes) {
    Result result;
    for (auto const& box : boxes) {
        Object object;
        object.box = box;
        result.objects.push_back(object);
    }
    return result;
}

double Get(Object const& object, char const* name) { return std::get<double>(object.attributes.at(name)); }

std::vector<std::string> GetNames(Object const& object) {
    std::vector<std::string> names;
    for (auto const& attribute : object.attributes) names.push_back(attribute.first);
    return names;
}

TEST(ObjectMeasurer, MeasuresFromTheMiddleOfTheBoxesBottomEdge) {
    ObjectMeasurer measurer({Camera, std::nullopt}, false);
    Result result = MakeResult({{250, 220, 291, 308}, {600, 240, 640, 330}});
    measurer.Measure(result, {768, 576});
    Measurer const expected({Camera, std::nullopt}, {768, 576});
    Object const& object = result.objects[0];
    EXPECT_THAT(GetNames(object), ElementsAre("distance_m", "ground_x_m", "ground_y_m", "height_m"));
    EXPECT_EQ(Get(object, "height_m"), expected.GetHeight({270.5, 308}, 88).metres);
    EXPECT_EQ(Get(object, "ground_x_m"), expected.GetGround({270.5, 308}).x);
    EXPECT_EQ(Get(object, "ground_y_m"), expected.GetGround({270.5, 308}).y);
    EXPECT_NEAR(Get(object, "distance_m"), std::hypot(Get(object, "ground_x_m"), Get(object, "ground_y_m")), 1e-9);
    EXPECT_EQ(Get(result.objects[1], "height_m"), expected.GetHeight({620, 330}, 90).metres);
}

TEST(ObjectMeasurer, StatesPlusMinusWhereItIsAskedFor) {
    ObjectMeasurer measurer({Camera, std::nullopt}, true);
    Result result = MakeResult({{250, 220, 290, 308}});
    measurer.Measure(result, {768, 576});
    Measurer const expected({Camera, std::nullopt}, {768, 576});
    EXPECT_THAT(GetNames(result.objects[0]), ElementsAre("distance_m", "distance_plus_minus_m", "ground_x_m",
                                                         "ground_y_m", "height_m", "height_plus_minus_m"));
    EXPECT_EQ(Get(result.objects[0], "height_plus_minus_m"), expected.GetHeight({270, 308}, 88).GetPlusMinus());
    EXPECT_EQ(Get(result.objects[0], "distance_plus_minus_m"),
              expected.GetDistanceFromCamera({270, 308}).GetPlusMinus());
}

TEST(ObjectMeasurer, GivesTheReasonInsteadOfNumbers) {
    ObjectMeasurer measurer({{5, 0, 7, 50}, std::nullopt}, true);
    // The horizon of this camera lies in row 234.
    Result result = MakeResult({{250, 100, 290, 150}, {250, 230, 290, 238}, {250, 300, 290, 400}});
    measurer.Measure(result, {768, 576});
    EXPECT_THAT(GetNames(result.objects[0]), ElementsAre("measurement_error"));
    EXPECT_EQ(std::get<std::string>(result.objects[0].attributes.at("measurement_error")), "Negative height");
    EXPECT_THAT(GetNames(result.objects[1]), ElementsAre("measurement_error"));
    EXPECT_EQ(std::get<std::string>(result.objects[1].attributes.at("measurement_error")), "Target is too far");
    EXPECT_EQ(result.objects[2].attributes.count("height_m"), 1U);
}

TEST(ObjectMeasurer, FollowsTheSizeOfTheFrames) {
    ObjectMeasurer measurer({Camera, std::nullopt}, false);
    Result small = MakeResult({{250, 220, 290, 308}}), large = MakeResult({{500, 440, 580, 616}});
    measurer.Measure(small, {768, 576});
    measurer.Measure(large, {1536, 1152});
    EXPECT_NEAR(Get(large.objects[0], "height_m"), Get(small.objects[0], "height_m"), 1e-6);
}

TEST(ObjectMeasurer, LeavesAFrameWithoutObjectsAlone) {
    ObjectMeasurer measurer({Camera, std::nullopt}, false);
    Result result;
    measurer.Measure(result, {768, 576});
    EXPECT_TRUE(result.objects.empty());
}

}  // namespace
}  // namespace qel::host::calibration
