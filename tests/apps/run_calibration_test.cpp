#include <cmath>
#include <filesystem>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"
#include "support/temporary_directory.hpp"
#include "support/test_video.hpp"

namespace qel::test {
namespace {

namespace json = boost::json;
using testing::HasSubstr;

class QelRunCalibrated : public testing::Test {
protected:
    QelRunCalibrated() : video(directory / "video.mkv"), file(directory / "camera.json") {
        WriteMovingSquare(video, {.frames = 5});
        WriteFile(file, R"({"tilt": 45, "roll": 0, "height_m": 4, "vertical_fov": 60})");
    }

    Outcome Run(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"run", video, "-a", "threshold", "-q", "--calibration", file};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(arguments);
    }

    TemporaryDirectory directory;
    std::string video, file;
};

TEST_F(QelRunCalibrated, GivesEveryObjectMetres) {
    Outcome const outcome = Run();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    std::vector<std::string> const lines = SplitLines(outcome.output);
    ASSERT_EQ(lines.size(), 5U);
    for (std::string const& line : lines) {
        json::value const object = json::parse(line).at("objects").at(0);
        // The bottom edge in row 16 of 48: 45 degrees less the arc tangent of a third of tan(30) below the horizon.
        double const ahead = 4 / std::tan((45 - 10.893394649) * 3.14159265358979 / 180);
        EXPECT_NEAR(object.at("ground_y_m").as_double(), ahead, 1e-4);
        EXPECT_NEAR(object.at("distance_m").as_double(),
                    std::hypot(object.at("ground_x_m").as_double(), object.at("ground_y_m").as_double()), 1e-6);
        EXPECT_GT(object.at("height_m").as_double(), 0.5);
        EXPECT_FALSE(object.as_object().contains("height_plus_minus_m"));
    }
    EXPECT_LT(json::parse(lines[0]).at("objects").at(0).at("ground_x_m").as_double(),
              json::parse(lines[4]).at("objects").at(0).at("ground_x_m").as_double());
}

TEST_F(QelRunCalibrated, StatesPlusMinusWhereItIsAskedFor) {
    json::value const object = json::parse(SplitLines(Run({"--uncertainty"}).output).at(0)).at("objects").at(0);
    EXPECT_GT(object.at("height_plus_minus_m").as_double(), 0);
    EXPECT_GT(object.at("distance_plus_minus_m").as_double(), 0);
}

TEST_F(QelRunCalibrated, GivesTheReasonWhereAnObjectCannotBeMeasured) {
    WriteFile(file, R"({"tilt": 5, "roll": 0, "height_m": 4, "vertical_fov": 60})");
    json::value const object = json::parse(SplitLines(Run().output).at(0)).at("objects").at(0);
    EXPECT_EQ(object.at("measurement_error"), "Negative height");
    EXPECT_FALSE(object.as_object().contains("height_m"));
}

TEST_F(QelRunCalibrated, DrawsAnAnnotatedVideo) {
    std::string const annotated = directory / "annotated.mp4";
    EXPECT_EQ(Run({"--annotate", annotated}).exitCode, 0);
    EXPECT_GT(ReadFile(annotated).size(), 500U);
}

TEST_F(QelRunCalibrated, RefusesAWrongCalibrationBeforeItWritesAnything) {
    std::string const output = directory / "out.jsonl";
    WriteFile(file, "{\"tilt\": 45,\n\"roll\": 0}");
    Outcome const outcome = Run({"--output", output});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: " + file + ":1:1: the member \"height_m\" is missing\n");
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(QelRunCalibrated, DoesNotOverwriteItsCalibration) {
    std::string const before = ReadFile(file);
    Outcome const outcome = Run({"--output", file});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.error, "qel: '" + file + "' is the calibration; write the results to another file\n");
    EXPECT_EQ(ReadFile(file), before);
}

TEST_F(QelRunCalibrated, StatesPlusMinusOnlyWithACalibration) {
    Outcome const outcome = RunProgram({"run", video, "-a", "threshold", "-q", "--uncertainty"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.error, HasSubstr("--uncertainty requires --calibration"));
}

}  // namespace
}  // namespace qel::test
