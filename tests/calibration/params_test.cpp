#include "qel/algorithm/calibration/params.hpp"

#include <limits>
#include <sstream>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace qel::algorithm::calibration {
namespace {

namespace units = boost::units;

Length Metres(float value) { return value * units::si::meters; }

std::string Print(Params const& params) {
    std::ostringstream stream;
    stream << params;
    return stream.str();
}

static_assert(std::is_nothrow_move_constructible_v<Params>);
static_assert(std::is_nothrow_swappable_v<Params>);

TEST(Params, AreNotEnabledAndZeroByDefault) {
    Params const params;
    EXPECT_FALSE(params.IsEnabled());
    EXPECT_EQ(params.GetTilt(), 0.0F);
    EXPECT_EQ(params.GetRoll(), 0.0F);
    EXPECT_EQ(params.GetHeight(), Metres(0));
    EXPECT_EQ(params.GetVerticalFov(), 0.0F);
}

TEST(Params, TakeTheFieldOfViewLastAndAreEnabled) {
    Params const params(30, 5, Metres(4), 60);
    EXPECT_TRUE(params.IsEnabled());
    EXPECT_EQ(params.GetTilt(), 30.0F);
    EXPECT_EQ(params.GetRoll(), 5.0F);
    EXPECT_EQ(params.GetHeight(), Metres(4));
    EXPECT_EQ(params.GetVerticalFov(), 60.0F);
}

TEST(Params, TakeTheEnabledFlagAsGiven) {
    EXPECT_FALSE(Params(false, 30, 5, Metres(4), 60).IsEnabled());
    EXPECT_TRUE(Params(true, 30, 5, Metres(4), 60).IsEnabled());
    EXPECT_EQ(Params(true, 30, 5, Metres(4), 60), Params(30, 5, Metres(4), 60));
}

TEST(Params, StoreAnyValueAsGiven) {
    constexpr float Infinity = std::numeric_limits<float>::infinity();
    Params const params(-400, Infinity, Metres(-3), -Infinity);
    EXPECT_EQ(params.GetTilt(), -400.0F);
    EXPECT_EQ(params.GetRoll(), Infinity);
    EXPECT_EQ(params.GetHeight(), Metres(-3));
    EXPECT_EQ(params.GetVerticalFov(), -Infinity);
}

TEST(Params, SetOneFieldAtATime) {
    Params params;
    params.SetEnabled(true);
    EXPECT_EQ(params, Params(true, 0, 0, Metres(0), 0));
    params.SetTilt(1);
    EXPECT_EQ(params, Params(true, 1, 0, Metres(0), 0));
    params.SetRoll(2);
    EXPECT_EQ(params, Params(true, 1, 2, Metres(0), 0));
    params.SetHeight(Metres(3));
    EXPECT_EQ(params, Params(true, 1, 2, Metres(3), 0));
    params.SetVerticalFov(4);
    EXPECT_EQ(params, Params(true, 1, 2, Metres(3), 4));
    params.SetEnabled(false);
    EXPECT_EQ(params, Params(false, 1, 2, Metres(3), 4));
}

TEST(Params, DifferWhenOneFieldDiffers) {
    constexpr float Nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        char const* name;
        Params left, right;
        bool equal;
    };
    Case const cases[] = {
        {"the same", Params(1, 2, Metres(3), 4), Params(1, 2, Metres(3), 4), true},
        {"enabled", Params(true, 1, 2, Metres(3), 4), Params(false, 1, 2, Metres(3), 4), false},
        {"tilt", Params(1, 2, Metres(3), 4), Params(9, 2, Metres(3), 4), false},
        {"roll", Params(1, 2, Metres(3), 4), Params(1, 9, Metres(3), 4), false},
        {"height", Params(1, 2, Metres(3), 4), Params(1, 2, Metres(9), 4), false},
        {"field of view", Params(1, 2, Metres(3), 4), Params(1, 2, Metres(3), 9), false},
        {"no tolerance", Params(1, 2, Metres(3), 4), Params(1.0000001F, 2, Metres(3), 4), false},
        {"zeros of either sign", Params(0.0F, 2, Metres(3), 4), Params(-0.0F, 2, Metres(3), 4), true},
        {"NaN tilt", Params(Nan, 2, Metres(3), 4), Params(Nan, 2, Metres(3), 4), false},
        {"NaN roll", Params(1, Nan, Metres(3), 4), Params(1, Nan, Metres(3), 4), false},
        {"NaN height", Params(1, 2, Metres(Nan), 4), Params(1, 2, Metres(Nan), 4), false},
        {"NaN field of view", Params(1, 2, Metres(3), Nan), Params(1, 2, Metres(3), Nan), false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.left == c.right, c.equal);
        EXPECT_EQ(c.left != c.right, !c.equal);
    }
}

TEST(Params, WithANaNDifferFromThemselves) {
    Params const params(std::numeric_limits<float>::quiet_NaN(), 2, Metres(3), 4);
    EXPECT_FALSE(params == params);
    EXPECT_TRUE(params != params);
}

TEST(Params, CopyIntoARecordOfTheirOwn) {
    Params const source(false, 1, 2, Metres(3), 4);
    Params constructed(source);
    EXPECT_EQ(constructed, source);
    Params assigned;
    assigned = source;
    EXPECT_EQ(assigned, source);
    constructed.SetTilt(9);
    assigned.SetEnabled(true);
    EXPECT_EQ(source, Params(false, 1, 2, Metres(3), 4));
}

TEST(Params, SurviveAssignmentToThemselves) {
    Params params(1, 2, Metres(3), 4);
    Params& same = params;
    params = same;
    EXPECT_EQ(params, Params(1, 2, Metres(3), 4));
    params = std::move(same);
    EXPECT_EQ(params, Params(1, 2, Metres(3), 4));
    swap(params, same);
    EXPECT_EQ(params, Params(1, 2, Metres(3), 4));
}

TEST(Params, MoveTheirRecordAndCanBeAssignedToAgain) {
    Params source(1, 2, Metres(3), 4);
    Params target(std::move(source));
    EXPECT_EQ(target, Params(1, 2, Metres(3), 4));
    source = Params(5, 6, Metres(7), 8);
    EXPECT_EQ(source, Params(5, 6, Metres(7), 8));
    EXPECT_EQ(target, Params(1, 2, Metres(3), 4));
    target = std::move(source);
    EXPECT_EQ(target, Params(5, 6, Metres(7), 8));
}

TEST(Params, SwapTheirRecords) {
    Params left(1, 2, Metres(3), 4), right;
    swap(left, right);
    EXPECT_EQ(left, Params());
    EXPECT_EQ(right, Params(1, 2, Metres(3), 4));
    Params const moved(std::move(left));
    swap(left, right);
    EXPECT_EQ(left, Params(1, 2, Metres(3), 4));
}

TEST(Params, PrintAsTextForLogs) {
    struct Case {
        char const* name;
        Params params;
        char const* text;
    };
    Case const cases[] = {
        {"the default", {}, R"({"enabled":0, "tilt":0, "roll":0, "height":0 m, "fov":0})"},
        {"whole numbers and a fraction",
         {30, 0, Metres(4.5F), 60},
         R"({"enabled":1, "tilt":30, "roll":0, "height":4.5 m, "fov":60})"},
        {"six digits",
         {16.877123F, -2.2244444F, Metres(7.0656789F), 27.108852F},
         R"({"enabled":1, "tilt":16.8771, "roll":-2.22444, "height":7.06568 m, "fov":27.1089})"},
        {"not finite",
         {std::numeric_limits<float>::infinity(), 0, Metres(-1), 1e-20F},
         R"({"enabled":1, "tilt":inf, "roll":0, "height":-1 m, "fov":1e-20})"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Print(c.params), c.text);
    }
}

TEST(Params, PrintByTheFlagsOfTheStream) {
    Params const params(30, 0, Metres(4.5F), 60);
    std::ostringstream stream;
    EXPECT_EQ(&(stream << std::boolalpha << params), &stream);
    EXPECT_EQ(stream.str(), R"({"enabled":true, "tilt":30, "roll":0, "height":4.5 m, "fov":60})");
    stream.str("");
    stream << std::noboolalpha << std::fixed;
    stream.precision(2);
    stream << params;
    EXPECT_EQ(stream.str(), R"({"enabled":1, "tilt":30.00, "roll":0.00, "height":4.50 m, "fov":60.00})");
}

TEST(Params, PrintTheHeightByTheFormatOfTheStreamsUnits) {
    struct Case {
        char const* name;
        std::ios_base& (*format)(std::ios_base&);
        char const* text;
    };
    Case const cases[] = {
        {"symbol", units::symbol_format, R"({"enabled":1, "tilt":30, "roll":0, "height":4500 m, "fov":60})"},
        {"name", units::name_format, R"({"enabled":1, "tilt":30, "roll":0, "height":4500 meter, "fov":60})"},
        {"raw", units::raw_format, R"({"enabled":1, "tilt":30, "roll":0, "height":4500 m, "fov":60})"},
        {"prefix", units::engineering_prefix, R"({"enabled":1, "tilt":30, "roll":0, "height":4.5 km, "fov":60})"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        std::ostringstream stream;
        stream << c.format << Params(30, 0, Metres(4500), 60);
        EXPECT_EQ(stream.str(), c.text);
    }
}

}  // namespace
}  // namespace qel::algorithm::calibration
