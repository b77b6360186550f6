#include <fstream>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/calibration/program.hpp"
#include "calibration/calibration_file.hpp"
#include "calibration/measurement.hpp"
#include "support/temporary_directory.hpp"

namespace qel::test {
namespace {

namespace calibration = host::calibration;
using testing::HasSubstr;

constexpr calibration::Mounting<double> Camera{16.877, 2.224, 7.066, 27.324};

class QelMeasure : public testing::Test {
protected:
    void SetUp() override { calibration::WriteCalibration(file_, {Camera, std::nullopt}); }

    Outcome Measure(std::vector<std::string> more) const {
        std::vector<std::string> arguments{"measure", "--calibration", file_, "--size", "768x576"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunQel(arguments);
    }

    TemporaryDirectory directory_;
    std::string file_ = directory_ / "camera.json";
};

TEST_F(QelMeasure, PrintsADistance) {
    Outcome const outcome = Measure({"--from", "120,400", "--to", "380,410.5"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    calibration::Measurer const measurer({Camera, std::nullopt}, {768, 576});
    calibration::Measurement const expected = measurer.GetDistance({120, 400}, {380, 410.5});
    char text[64];
    std::snprintf(text, sizeof text, "%.3f m +/- %.3f m\n", expected.metres, expected.GetPlusMinus());
    EXPECT_EQ(outcome.output, text);
}

TEST_F(QelMeasure, PrintsAHeightAlsoAsJson) {
    Outcome const outcome = Measure({"--foot", "250,420", "--pixels", "100", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    calibration::Measurer const measurer({Camera, std::nullopt}, {768, 576});
    calibration::Measurement const expected = measurer.GetHeight({250, 420}, 100);
    auto const value = boost::json::parse(outcome.output);
    EXPECT_NEAR(value.at("height_m").as_double(), expected.metres, 1e-4);
    EXPECT_NEAR(value.at("plus_minus_m").as_double(), expected.GetPlusMinus(), 1e-3);
}

TEST_F(QelMeasure, CountsTheCalibrationsErrorsAndTheClicks) {
    auto const plusMinus = [&](std::vector<std::string> const& more) {
        std::vector<std::string> arguments{"--foot", "250,420", "--pixels", "100", "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return boost::json::parse(Measure(arguments).output).at("plus_minus_m").as_double();
    };
    double const usual = plusMinus({});
    EXPECT_NEAR(plusMinus({"--click-error", "2"}) / usual, 2, 0.02);
    calibration::Covariance covariance{};
    covariance[2][2] = 0.25;
    calibration::WriteCalibration(file_, {Camera, covariance});
    EXPECT_GT(plusMinus({}), 2 * usual);
}

TEST_F(QelMeasure, SaysWhyItCannotMeasure) {
    calibration::WriteCalibration(file_, {{5, 0, 7, 50}, std::nullopt});
    Outcome const above = Measure({"--from", "120,40", "--to", "380,410"});
    EXPECT_EQ(above.exitCode, 1);
    EXPECT_EQ(above.output, "");
    EXPECT_EQ(above.error, "qel: Point is not on the ground\n");
    Outcome const far = Measure({"--foot", "120,242", "--pixels", "1"});
    EXPECT_EQ(far.exitCode, 1);
    EXPECT_EQ(far.error, "qel: Target is too far\n");
}

TEST_F(QelMeasure, RefusesWrongUseInOneLine) {
    struct Case {
        std::vector<std::string> arguments;
        char const* error;
    };
    Case const cases[] = {
        {{}, "qel: measure what? --from X,Y --to X,Y or --foot X,Y --pixels H (see qel measure --help)\n"},
        {{"--from", "1,2"}, "--from requires --to"},
        {{"--foot", "1,2"}, "--foot requires --pixels"},
        {{"--from", "1,2", "--to", "3,4", "--foot", "1,2", "--pixels", "3"}, "excludes"},
        {{"--from", "1;2", "--to", "3,4"}, "qel: --from: expected a position in pixels such as 120,400.5, not '1;2'\n"},
        {{"--from", "1,2", "--to", "3,nan"},
         "qel: --to: expected a position in pixels such as 120,400.5, not '3,nan'\n"},
        {{"--foot", "1,2,3", "--pixels", "3"}, "qel: --foot: expected a position in pixels such as"},
        {{"--from", "769,2", "--to", "3,4"}, "qel: --from: 769,2 lies outside the picture\n"},
        {{"--from", "1,2", "--to", "3,-0.5"}, "qel: --to: 3,-0.5 lies outside the picture\n"},
        {{"--foot", "1,577", "--pixels", "3"}, "qel: --foot: 1,577 lies outside the picture\n"},
        {{"--foot", "1,2", "--pixels", "-3"}, "--pixels"},
        {{"--from", "1,2", "--to", "3,4", "--click-error", "-1"}, "--click-error"},
    };
    for (Case const& c : cases) {
        Outcome const outcome = Measure(c.arguments);
        EXPECT_EQ(outcome.exitCode, 2) << c.error;
        EXPECT_THAT(outcome.error, HasSubstr(c.error));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    }
    for (char const* size : {"768", "768x", "0x576", "768x-1", "768x576x3", "70000x5"}) {
        Outcome const outcome = RunQel({"measure", "-c", file_, "--size", size, "--from", "1,2", "--to", "3,4"});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error,
                  std::string("qel: --size: expected a size in pixels such as 768x576, not '") + size + "'\n");
    }
}

TEST_F(QelMeasure, TellsWhatIsWrongWithItsFile) {
    std::ofstream(file_) << "{\"tilt\": 3,\n \"roll\": true}";
    Outcome const outcome = Measure({"--from", "1,2", "--to", "3,4"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "qel: " + file_ + ":2:10: roll: expected a number, not a boolean\n");
    Outcome const missing = RunQel({"measure", "-c", "/no/file", "--size", "8x8", "--from", "1,2", "--to", "3,4"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.error, "qel: cannot read '/no/file': No such file or directory\n");
}

}  // namespace
}  // namespace qel::test
