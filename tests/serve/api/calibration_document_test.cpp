#include "api/calibration_document.hpp"

#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fault.hpp"
#include "host/calibration/scene.hpp"
#include "http/problem.hpp"
#include "support/message_of.hpp"

namespace qel::serve::api {
namespace {

namespace calibration = host::calibration;
using calibration::Mounting;
using calibration::Pixel;
using testing::HasSubstr;

constexpr calibration::Size Picture{1280, 720};
/// So far ahead that the ground meets the horizon there, to a hundredth of a pixel.
constexpr double Far = 1e7;

/// How far a pixel lies off the line through two others.
double GetDistance(Pixel const& pixel, Horizon const& line) {
    double const x = line.to.x - line.from.x, y = line.to.y - line.from.y;
    return std::abs(x * (pixel.y - line.from.y) - y * (pixel.x - line.from.x)) / std::hypot(x, y);
}

bool IsOnBorder(Pixel const& pixel) {
    auto const isAt = [](double value, double border) { return std::abs(value - border) < 1e-6; };
    return isAt(pixel.x, 0) || isAt(pixel.x, Picture.width) || isAt(pixel.y, 0) || isAt(pixel.y, Picture.height);
}

TEST(FindHorizon, LiesWhereTheGroundEndsFromBorderToBorder) {
    for (Mounting<double> const& camera : {Mounting<double>{20, 0, 5, 60},
                                           {20, 12, 5, 60},
                                           {5, -25, 12, 40},
                                           {0, 3, 0.5, 90},
                                           {-10, 50, 5, 60},
                                           {30, 30, 100, 100}}) {
        SCOPED_TRACE(testing::PrintToString(calibration::ToArray(camera)));
        auto const horizon = FindHorizon(camera, Picture);
        ASSERT_TRUE(horizon);
        EXPECT_TRUE(IsOnBorder(horizon->from) && IsOnBorder(horizon->to));
        EXPECT_LT(horizon->from.x, horizon->to.x) << "from left to right";
        for (double const aside : {-Far, 0.0, Far}) {
            EXPECT_LT(GetDistance(calibration::test::Project(camera, Picture, aside, Far), *horizon), 0.05);
        }
    }
}

TEST(FindHorizon, IsNowhereWhereThePictureShowsGroundAlone) {
    EXPECT_FALSE(FindHorizon({60, 0, 5, 40}, Picture));
    EXPECT_FALSE(FindHorizon({90, 0, 5, 40}, Picture));
    EXPECT_FALSE(FindHorizon({-60, 0, 5, 40}, Picture)) << "or the sky alone";
}

TEST(ReadCalibrationRequest, TakesAReferencesDocumentWithOrWithoutAStream) {
    auto const alone = ReadCalibrationRequest(R"({"size": [8, 6]})");
    EXPECT_EQ(alone.problem.size, (calibration::Size{8, 6}));
    EXPECT_EQ(alone.stream, "");
    EXPECT_FALSE(alone.save);
    EXPECT_EQ(ReadCalibrationRequest(R"({"size": [8, 6], "stream": null, "save": false})").stream, "");
    auto const both = ReadCalibrationRequest(R"({"save": true, "size": [8, 6], "stream": "gate"})");
    EXPECT_EQ(both.stream, "gate");
    EXPECT_TRUE(both.save);
}

TEST(ReadCalibrationRequest, NamesEverythingThatIsWrongWithStreamAndSave) {
    auto const faults = [](char const* body) {
        try {
            ReadCalibrationRequest(body);
        } catch (Refused const& refused) {
            return refused.GetFaults();
        }
        return std::vector<Fault>{};
    };
    EXPECT_EQ(faults(R"({"size": [8, 6], "stream": 2, "save": 1})"),
              (std::vector<Fault>{{"stream", "is no text"}, {"save", "is neither true nor false"}}));
    EXPECT_EQ(faults(R"({"size": [8, 6], "save": true})"),
              (std::vector<Fault>{{"stream", "is missing: whose calibration is saved?"}}));
    EXPECT_EQ(faults(R"({"size": [8, 6], "save": true, "stream": null})").size(), 1U);
}

TEST(ReadCalibrationRequest, TellsWhereInTheBodyAReferenceIsWrong) {
    constexpr char body[] = "{\"stream\": \"gate\",\n \"save\": true,\n \"size\": [768,\n  0]}";
    EXPECT_EQ(test::MessageOf<http::Problem>([&] { ReadCalibrationRequest(body); }),
              "the references:4:3: size[1]: expected a number from 1 to 65536, not 0");
    EXPECT_THAT(test::MessageOf<http::Problem>([&] { ReadCalibrationRequest("{\n \"sise\": []}"); }),
                HasSubstr("the references:2:10: sise: no such member is known"));
}

TEST(ReadCalibrationRequest, TakesUpTo32References) {
    std::string const segment = R"({"from": [1, 3], "to": [7, 4], "metres": 2})";
    std::string list = segment;
    for (int i = 1; i < 32; ++i) list += ", " + segment;
    auto const body = [](std::string const& segments) { return R"({"size": [8, 6], "ground": [)" + segments + "]}"; };
    EXPECT_EQ(ReadCalibrationRequest(body(list)).problem.references.size(), 32U);
    EXPECT_EQ(test::MessageOf<http::Problem>([&] { ReadCalibrationRequest(body(list + ", " + segment)); }),
              "there are more than 32 references: mark fewer, or have qel calibrate take its time");
}

TEST(CalibrationDocument, SaysNullOfWhatIsNotKnown) {
    calibration::Problem problem{Picture,
                                 {{calibration::Reference::Kind::Ground, {1, 2}, {3, 4}, 5, 0, "kerb"},
                                  {calibration::Reference::Kind::Vertical, {1, 9}, {1, 4}, 1.8}},
                                 {},
                                 1};
    calibration::Solution solution;
    solution.calibration.mounting = {60, 0, 5, 40};
    solution.standardErrors = {1, 2, 3, 4};
    solution.residuals = {{4.5, -0.5, 0.25, false}, {std::nullopt, std::nullopt, std::nullopt, true}};
    solution.warnings = {{calibration::Finding::Kind::NothingSpare, "one"},
                         {calibration::Finding::Kind::LooksWrong, "two"}};
    auto const document = ToJson(problem, solution);
    auto const text = [&](char const* member) { return boost::json::serialize(document.at(member)); };
    EXPECT_EQ(text("standard_errors"), R"({"tilt":1E0,"roll":2E0,"height_m":3E0,"vertical_fov":4E0})");
    EXPECT_EQ(text("residuals"),
              R"([{"name":"\"kerb\"","kind":"ground","metres":5E0,"measured":4.5E0,"off":-5E-1,)"
              R"("standard_error":2.5E-1,"looks_wrong":false},)"
              R"({"name":"vertical segment 1","kind":"vertical","metres":1.8E0,"measured":null,"off":null,)"
              R"("standard_error":null,"looks_wrong":true}])");
    EXPECT_EQ(text("warnings"), R"(["one","two"])");
    EXPECT_EQ(text("horizon"), "null");
    EXPECT_THAT(text("calibration"), HasSubstr("\"height_m\":5"));
    EXPECT_FALSE(document.at("grid").as_array().empty());
}

TEST(CalibrationDocument, HoldsTheHorizonFromLeftToRight) {
    calibration::Solution solution;
    solution.calibration.mounting = {0, 0, 5, 60};
    auto const document = ToJson({Picture, {}, {}, 1}, solution);
    auto const at = [&](char const* end, std::size_t axis) {
        return document.at("horizon").at(end).at(axis).to_number<double>();
    };
    EXPECT_NEAR(at("from", 0), 0, 1e-9);
    EXPECT_NEAR(at("from", 1), 360, 1e-9);
    EXPECT_NEAR(at("to", 0), 1280, 1e-9);
    EXPECT_NEAR(at("to", 1), 360, 1e-9);
}

}  // namespace
}  // namespace qel::serve::api
