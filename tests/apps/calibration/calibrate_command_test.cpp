#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include "apps/calibration/program.hpp"
#include "calibration/calibration_file.hpp"
#include "host/calibration/scene.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace calibration = host::calibration;
using testing::HasSubstr;
using testing::StartsWith;

constexpr calibration::Mounting<double> Camera{17, 2, 7, 30};
constexpr calibration::Size Picture{768, 576};

/// An argument such as 120,400:380,410=5.2, the positions rounded to whole pixels.
std::string Mark(calibration::Pixel from, calibration::Pixel to, double metres) {
    char text[128];
    std::snprintf(text, sizeof text, "%.0f,%.0f:%.0f,%.0f=%.3f", from.x, from.y, to.x, to.y, metres);
    return text;
}

std::string Ground(double x0, double y0, double x1, double y1) {
    return Mark(calibration::test::Project(Camera, Picture, x0, y0),
                calibration::test::Project(Camera, Picture, x1, y1), std::hypot(x1 - x0, y1 - y0));
}

std::string Person(double x, double y, double metres) {
    return Mark(calibration::test::Project(Camera, Picture, x, y),
                calibration::test::Project(Camera, Picture, x, y, metres), metres);
}

/// Eight segments on the ground and four people, as a person would click them.
std::vector<std::string> MakeMarks() {
    std::vector<std::string> arguments{"calibrate", "--size", "768x576"};
    for (std::string const& ground :
         {Ground(-4, 18, 4, 19), Ground(-4, 18, -6, 34), Ground(4, 19, 6, 36), Ground(-6, 34, 6, 36),
          Ground(-2, 20, 3, 27), Ground(2, 19, -3, 28), Ground(0, 17, 0, 25), Ground(-5, 26, 5, 26)}) {
        arguments.insert(arguments.end(), {"--ground", ground});
    }
    for (std::string const& person :
         {Person(-3, 20, 1.8), Person(2, 24, 1.65), Person(0, 30, 1.75), Person(4, 27, 1.9)}) {
        arguments.insert(arguments.end(), {"--vertical", person});
    }
    return arguments;
}

std::vector<std::string> With(std::vector<std::string> arguments, std::vector<std::string> const& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST(QelCalibrate, FindsTheCameraFromMarksInWholePixels) {
    TemporaryDirectory const directory;
    std::string const file = directory / "camera.json";
    Outcome const outcome = RunQel(With(MakeMarks(), {"--output", file}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    calibration::Calibration const found = calibration::ReadCalibration(file);
    std::array<double, 4> const limits{0.7, 0.7, 0.25, 1};
    for (std::size_t p = 0; p < 4; ++p) {
        double const off = std::abs(ToArray(found.mounting)[p] - ToArray(Camera)[p]);
        EXPECT_LT(off, limits[p]) << calibration::ParameterNames[p];
        EXPECT_LT(off, 1.96 * std::sqrt(found.covariance.value()[p][p])) << calibration::ParameterNames[p];
    }
    EXPECT_THAT(outcome.output, StartsWith("parameter         value  standard error\ntilt             1"));
    EXPECT_THAT(outcome.output, HasSubstr("\nvertical segment 4               1.900     1."));
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1 + 4 + 1 + 1 + 12);
}

TEST(QelCalibrate, WritesWhatMeasureReads) {
    TemporaryDirectory const directory;
    std::string const file = directory / "camera.json";
    ASSERT_EQ(RunQel(With(MakeMarks(), {"--output", file})).exitCode, 0);
    Outcome const outcome =
        RunQel({"measure", "--calibration", file, "--size", "768x576", "--from", "300,350", "--to", "500,400"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.output, HasSubstr(" m +/- 0."));
}

TEST(QelCalibrate, ReadsReferencesFromAFileAndAddsThoseOfTheArguments) {
    TemporaryDirectory const directory;
    std::string const file = directory / "marks.json";
    std::ofstream(file) << R"({"size": [768, 576], "fixed": {"roll": 2, "vertical_fov": 30, "height_m": 7},
        "ground": [{"from": [100, 450], "to": [600, 450], "metres": 7, "name": "kerb"}]})";
    Outcome const outcome = RunQel({"calibrate", "--references", file, "--vertical", Person(-3, 20, 1.8)});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.output, HasSubstr("\"kerb\" "));
    EXPECT_THAT(outcome.output, HasSubstr("vertical segment 1"));
    EXPECT_THAT(outcome.output, HasSubstr("roll              2.000  held fixed\n"));
}

TEST(QelCalibrate, WarnsOfAReferenceThatLooksWrong) {
    Outcome const outcome = RunQel(With(MakeMarks(), {"--vertical", Person(1, 22, 1.7).substr(0, 15) + "=2.9"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.error, HasSubstr("qel: warning: vertical segment 5 looks wrong: the others make it 1."));
    EXPECT_THAT(outcome.output, HasSubstr("  looks wrong\n"));
}

TEST(QelCalibrate, LeavesTheOldFileOrTheNewOneWheneverItIsKilled) {
    TemporaryDirectory const directory;
    std::string const file = directory / "camera.json";
    Command command;
    command.program = QEL_TEST_PROGRAM;
    command.arguments = With(MakeMarks(), {"--output", file});
    auto const start = std::chrono::steady_clock::now();
    ASSERT_EQ(RunProcess(command).exitCode, 0);
    auto const whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::string const written = ReadFile(file);
    std::string const old(100000, 'x');
    constexpr int Moments = 60;
    for (int moment = 1; moment <= Moments; ++moment) {
        WriteFile(file, old);
        command.prepare = [&] {
            // The timer outlives the change of the program; it kills as SIGKILL does, without a last word.
            auto const wait = whole * moment / Moments;
            itimerval const timer{{0, 0}, {wait.count() / 1000000, wait.count() % 1000000 + 1}};
            setitimer(ITIMER_REAL, &timer, nullptr);
        };
        int const exitCode = RunProcess(command).exitCode;
        EXPECT_TRUE(exitCode == 0 || exitCode == -SIGALRM) << exitCode;
        std::string const content = ReadFile(file);
        ASSERT_TRUE(content == (exitCode == 0 ? written : old) || content == written) << "killed at moment " << moment;
    }
}

TEST(QelCalibrate, RefusesByNameAndWritesNothingWhereTheCameraIsNotDetermined) {
    TemporaryDirectory const directory;
    std::string const file = directory / "camera.json";
    std::vector<std::string> arguments{"calibrate", "--size", "768x576", "--output", file};
    for (std::string const& person :
         {Person(-3, 20, 1.8), Person(2, 21, 1.65), Person(0, 22, 1.75), Person(1, 23, 1.9), Person(-1, 24, 1.7)}) {
        arguments.insert(arguments.end(), {"--vertical", person});
    }
    Outcome const outcome = RunQel(arguments);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, StartsWith("qel: heights alone do not tell the tilt from the field of view"));
    EXPECT_THAT(outcome.error, HasSubstr("the references do not determine the camera; nothing is written\n"));
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(QelCalibrate, RefusesWrongUseInOneLine) {
    struct Case {
        std::vector<std::string> arguments;
        char const* error;
        int exitCode;
    };
    Case const cases[] = {
        {{}, "qel: calibrate what? --references FILE or --size WxH with segments (see qel calibrate --help)\n", 2},
        {{"--size", "8x8", "--ground", "1,2:3,4"},
         "qel: --ground: expected two positions in pixels and a length in metres such as 120,400:380,410=5.2, not "
         "'1,2:3,4'\n",
         2},
        {{"--size", "8x8", "--vertical", "1,2:3,4=5~x"}, "qel: --vertical: expected two positions", 2},
        {{"--size", "8x8", "--ground", "1,2:3,4=0"},
         "qel: ground segment 1: its length must be more than 0 m, not 0\n",
         2},
        {{"--size", "8x8", "--fix", "rol=1"}, "qel: --fix: there is no parameter 'rol'; did you mean 'roll'?", 2},
        {{"--size", "8x8", "--fix", "roll"}, "qel: --fix: expected a parameter and its value such as roll=0", 2},
        {{"--size", "8x8", "--fix", "roll=200"}, "qel: roll: it must be -180 to 180 degrees, not 200\n", 2},
        {{"--size", "8x8", "--click-error", "0"}, "--click-error", 2},
        {{"--references", "/no/file"}, "qel: cannot read '/no/file': No such file or directory\n", 1},
    };
    for (Case const& c : cases) {
        Outcome const outcome = RunQel(With({"calibrate"}, c.arguments));
        EXPECT_EQ(outcome.exitCode, c.exitCode) << c.error;
        EXPECT_THAT(outcome.error, HasSubstr(c.error));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    }
}

TEST(QelCalibrate, TellsWhereItCannotWrite) {
    Outcome const outcome = RunQel(With(MakeMarks(), {"--output", "/no/such/camera.json"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: cannot write '/no/such/camera.json': No such file or directory\n");
}

}  // namespace
}  // namespace qel::test
