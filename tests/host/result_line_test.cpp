#include "result_line.hpp"

#include <cmath>
#include <limits>

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace qel::host {
namespace {

using algorithm::video::Object;
using algorithm::video::Result;
using Frame = media::video::FrameBase<void const>;

std::string LineOf(std::vector<Object> objects, std::string const& source = "a.avi") {
    Result result;
    result.objects = std::move(objects);
    Frame const frame({}, media::ColourFormat::Grey8, 768, 576, media::TimePoint(std::chrono::nanoseconds(1234567890)),
                      {}, {}, {});
    return MakeResultLine(source, {7, frame, result});
}

TEST(MakeResultLine, WritesAFrameWithoutObjects) {
    EXPECT_EQ(
        LineOf({}),
        "{\"frame\":7,\"timestamp\":1234567890,\"source\":\"a.avi\",\"resolution\":{\"width\":768,\"height\":576},"
        "\"objects\":[]}\n");
}

TEST(MakeResultLine, TellsForHowLongTheSourceWasAway) {
    Frame const frame({}, media::ColourFormat::Grey8, 64, 48, media::TimePoint(std::chrono::seconds(5)), {}, {}, {});
    EXPECT_EQ(MakeResultLine("rtsp://c", {1, frame, Result(), std::chrono::milliseconds(3250)}),
              "{\"frame\":1,\"timestamp\":5000000000,\"gap\":3250000000,\"source\":\"rtsp://c\","
              "\"resolution\":{\"width\":64,\"height\":48},\"objects\":[]}\n");
}

TEST(MakeResultLine, WritesTheBoxInSharesOfTheFrameAndInPixels) {
    EXPECT_EQ(
        LineOf({{{192, 144, 384, 576}, 1000, "person", 0.75F}, {{0, 0, 768, 1}, 3, "", 1}}),
        "{\"frame\":7,\"timestamp\":1234567890,\"source\":\"a.avi\",\"resolution\":{\"width\":768,\"height\":576},"
        "\"objects\":["
        "{\"detection\":{\"bounding_box\":{\"x_min\":0.25,\"y_min\":0.25,\"x_max\":0.5,\"y_max\":1},"
        "\"confidence\":0.75,\"label\":\"person\"},\"x\":192,\"y\":144,\"w\":192,\"h\":432,\"area\":1000},"
        "{\"detection\":{\"bounding_box\":{\"x_min\":0,\"y_min\":0,\"x_max\":1,\"y_max\":0.001736111111111111},"
        "\"confidence\":1,\"label\":\"\"},\"x\":0,\"y\":0,\"w\":768,\"h\":1,\"area\":3}]}\n");
}

TEST(MakeResultLine, AddsAttributesInTheOrderOfTheirNames) {
    Object object;
    object.attributes = {{"speed", 1.5},
                         {"colours", std::vector<std::string>{"red", "\"dark\" blue"}},
                         {"seen", true},
                         {"id", std::int64_t{-9007199254740993}},
                         {"none", std::vector<std::string>{}},
                         {"shares", std::vector<double>{0.75, 1, std::numeric_limits<double>::quiet_NaN()}},
                         {"plate", std::string("AB\n12")}};
    std::string const line = LineOf({object});
    EXPECT_NE(line.find("\"area\":0,\"colours\":[\"red\",\"\\\"dark\\\" blue\"],\"id\":-9007199254740993,\"none\":[],"
                        "\"plate\":\"AB\\n12\",\"seen\":true,\"shares\":[0.75,1,null],\"speed\":1.5}]}\n"),
              std::string::npos)
        << line;
}

TEST(MakeResultLine, LeavesOutAttributesThatBearTheNameOfAFixedMember) {
    Object object;
    object.area = 5;
    for (char const* name : {"detection", "x", "y", "w", "h", "area"}) object.attributes[name] = std::string("other");
    object.attributes["xx"] = true;
    std::string const line = LineOf({object});
    EXPECT_EQ(line.find("other"), std::string::npos);
    EXPECT_NE(line.find("\"area\":5,\"xx\":true}"), std::string::npos);
}

TEST(MakeResultLine, WritesNullForNumbersThatJsonLacks) {
    Object object;
    object.confidence = std::numeric_limits<float>::quiet_NaN();
    object.attributes["far"] = std::numeric_limits<double>::infinity();
    std::string const line = LineOf({object});
    EXPECT_NE(line.find("\"confidence\":null"), std::string::npos);
    EXPECT_NE(line.find("\"far\":null"), std::string::npos);
    EXPECT_NO_THROW((void)boost::json::parse(line));
}

TEST(MakeResultLine, KeepsEveryBitOfANumber) {
    Object object;
    object.confidence = 0.1F;
    object.attributes["third"] = 1.0 / 3;
    object.attributes["tiny"] = 1e-300;
    auto const parsed = boost::json::parse(LineOf({object})).at("objects").at(0);
    EXPECT_EQ(parsed.at("detection").at("confidence").as_double(), 0.1);
    EXPECT_NE(LineOf({object}).find("\"third\":0.3333333333333333,"), std::string::npos);
    EXPECT_NE(LineOf({object}).find("\"tiny\":1e-300}"), std::string::npos);
}

TEST(MakeResultLine, IsValidWhateverNamesHold) {
    Object object;
    object.label = "caf\xE9 \x01";
    object.attributes["\xFF name"] = std::string("\xC3\xA9\xED\xA0\x80");
    std::string const line = LineOf({object}, "dir/\"quoted\" \\ \xE9.avi");
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    auto const parsed = boost::json::parse(line);
    EXPECT_EQ(parsed.at("source"), "dir/\"quoted\" \\ \xEF\xBF\xBD.avi");
    EXPECT_EQ(parsed.at("objects").at(0).at("detection").at("label"), "caf\xEF\xBF\xBD \x01");
    EXPECT_EQ(parsed.at("objects").at(0).at("\xEF\xBF\xBD name"), "\xC3\xA9\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(MakeResultLine, GivesABoxOfWrongOrderNoExtent) {
    std::string const line = LineOf({{{10, 20, 5, 5}, 0, "", 0}});
    EXPECT_NE(line.find("\"x\":10,\"y\":20,\"w\":0,\"h\":0"), std::string::npos);
}

}  // namespace
}  // namespace qel::host
