// The engine beside the slow model of tests/reference, bit for bit, and laws that hold for every camera.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "calibration/scene.hpp"
#include "qel/algorithm/calibration/engine.hpp"
#include "reference/calibration.hpp"

namespace qel::algorithm::calibration {
namespace {

using namespace test;
using Size = geometry::Dimension<int, 2>;

/// The same cases in every run; an RC_PARAMS of the environment is obeyed instead.
bool const Seeded = setenv("RC_PARAMS", "seed=20261121", 0) == 0;

/// Equal bits; one NaN is as good as another.
::testing::AssertionResult SameBits(float actual, float expected) {
    if (std::isnan(actual) && std::isnan(expected)) return ::testing::AssertionSuccess();
    if (std::bit_cast<std::uint32_t>(actual) == std::bit_cast<std::uint32_t>(expected)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << std::hexfloat << actual << " is not " << expected;
}

reference::Measured MeasureHeight(Engine const& engine, Engine::Point foot, unsigned int extent, Size size) {
    try {
        return {engine.GetHeight(foot, Extent(extent), size).value(), {}};
    } catch (std::runtime_error const& error) {
        return {0, error.what()};
    }
}

class Inputs {
public:
    explicit Inputs(std::uint32_t seed) : random_(seed) {}

    /// Mostly cameras that people mount, some of any values at all.
    reference::Mounting NextMounting() {
        if (Below(4) == 0) return {Real(-250, 250), Real(-250, 250), Real(-5, 50), Real(-50, 250)};
        if (Below(3) == 0) {
            return {static_cast<float>(Below(10)) * 10, static_cast<float>(Below(3)) * 90, 5,
                    static_cast<float>(Below(9) + 1) * 20};
        }
        return {Real(0, 90), Real(-20, 20), Real(0.5F, 30), Real(10, 120)};
    }

    Size NextSize() {
        constexpr Size Sizes[] = {{768, 576}, {1920, 1080}, {1, 1}, {1080, 1920}, {333, 1000}, {640, 33}};
        return Sizes[Below(std::size(Sizes))];
    }

    /// Mostly anywhere, sometimes at an end or in the middle.
    unsigned int NextCoordinate() {
        constexpr unsigned int Special[] = {0, 1, 32767, 32768, 32769, 65534, 65535};
        return Below(5) == 0 ? Special[Below(std::size(Special))] : static_cast<unsigned int>(Below(65536));
    }

private:
    std::size_t Below(std::size_t end) { return random_() % end; }
    float Real(float low, float high) { return low + (high - low) * (static_cast<float>(random_() >> 8) * 0x1p-24F); }

    std::mt19937 random_;
};

TEST(EngineAgainstReference, AgreesInEveryBit) {
    Inputs inputs(31);
    int heights = 0, negative = 0, far = 0, steep = 0;
    for (int camera = 0; camera < 3000; ++camera) {
        reference::Mounting const mounting = inputs.NextMounting();
        Size const size = inputs.NextSize();
        reference::CalibrationModel const model(mounting, size.width, size.height);
        Engine engine;
        engine.SetCalibrationParams(Params(mounting.tilt, mounting.roll, Metres(mounting.height), mounting.fov));
        SCOPED_TRACE(::testing::Message() << engine.GetCalibrationParams() << ' ' << size.width << 'x' << size.height);
        ASSERT_EQ(engine.GetCalibrationStatus(), model.Status());
        steep += model.Status() == 0;
        for (int round = 0; round < 40; ++round) {
            unsigned int const ax = inputs.NextCoordinate(), ay = inputs.NextCoordinate();
            unsigned int const bx = inputs.NextCoordinate(), by = inputs.NextCoordinate();
            ASSERT_TRUE(
                SameBits(engine.GetDistance(At(ax, ay), At(bx, by), size).value(), model.Distance(ax, ay, bx, by)));
            auto const position = engine.UnprojectPoint(At(ax, ay));
            auto const expected = model.Unproject(model.LogicalX(ax), model.LogicalY(ay));
            ASSERT_TRUE(SameBits(position.x, expected.x));
            ASSERT_TRUE(SameBits(position.y, expected.y));
            reference::Measured const height = model.Height(ax, ay, by);
            reference::Measured const measured = MeasureHeight(engine, At(ax, ay), by, size);
            ASSERT_EQ(measured.error, height.error);
            ASSERT_TRUE(SameBits(measured.value, height.value));
            heights += height.error.empty();
            negative += height.error == "Negative height";
            far += height.error == "Target is too far";
        }
    }
    // Every road was taken often.
    EXPECT_GT(heights, 10000);
    EXPECT_GT(negative, 1000);
    EXPECT_GT(far, 1000);
    EXPECT_GT(steep, 500);
}

/// A camera and two points on the ground in front of it, all in whole steps.
struct View {
    Params params;
    Engine::Point a, b;
};

View AnyView() {
    auto const coordinate = rc::gen::inRange(0U, 65536U);
    auto const params = Params(static_cast<float>(*rc::gen::inRange(0, 900)) / 10,
                               static_cast<float>(*rc::gen::inRange(-200, 200)) / 10,
                               Metres(static_cast<float>(*rc::gen::inRange(5, 300)) / 10),
                               static_cast<float>(*rc::gen::inRange(100, 1200)) / 10);
    Engine::Point const a = At(*coordinate, *coordinate);
    Engine::Point const b = At(*coordinate, *coordinate);
    return {params, a, b};
}

constexpr Size Picture{768, 576};

RC_GTEST_PROP(EngineLaws, SwappingTwoPointsLeavesADistanceAsItIs, ()) {
    View const view = AnyView();
    Engine engine;
    engine.SetCalibrationParams(view.params);
    RC_ASSERT(SameBits(engine.GetDistance(view.a, view.b, Picture).value(),
                       engine.GetDistance(view.b, view.a, Picture).value()));
}

RC_GTEST_PROP(EngineLaws, ADistanceIsNeverNegative, ()) {
    View const view = AnyView();
    Engine engine;
    engine.SetCalibrationParams(view.params);
    RC_ASSERT(engine.GetDistance(view.a, view.b, Picture).value() >= 0.0F);
}

RC_GTEST_PROP(EngineLaws, DoublingTheCamerasHeightDoublesEveryLengthExactly, ()) {
    View const view = AnyView();
    Params high = view.params;
    high.SetHeight(high.GetHeight() * 2.0F);
    Engine engine, doubled;
    engine.SetCalibrationParams(view.params);
    doubled.SetCalibrationParams(high);
    RC_ASSERT(SameBits(doubled.GetDistance(view.a, view.b, Picture).value(),
                       2 * engine.GetDistance(view.a, view.b, Picture).value()));
    reference::Measured const low = MeasureHeight(engine, view.a, view.b.y.value, Picture);
    reference::Measured const tall = MeasureHeight(doubled, view.a, view.b.y.value, Picture);
    if (tall.error == "Target is too far") return;
    RC_ASSERT(low.error == tall.error);
    RC_ASSERT(SameBits(tall.value, 2 * low.value));
}

RC_GTEST_PROP(EngineLaws, ScalingTheCamerasHeightScalesEveryLength, ()) {
    View const view = AnyView();
    float const scale = static_cast<float>(*rc::gen::inRange(10, 1000)) / 100;
    Params scaled = view.params;
    scaled.SetHeight(scaled.GetHeight() * scale);
    Engine engine, other;
    engine.SetCalibrationParams(view.params);
    other.SetCalibrationParams(scaled);
    float const distance = engine.GetDistance(view.a, view.b, Picture).value();
    float const expected = scale * distance;
    float const measured = other.GetDistance(view.a, view.b, Picture).value();
    // Far away a rounding of the last place moves a point by metres: only what lies near enough is compared.
    auto const reach = [&](Engine::Point point) {
        auto const position = engine.UnprojectPoint(point);
        return std::hypot(position.x, position.y) / engine.GetCalibrationParams().GetHeight().value();
    };
    RC_PRE(reach(view.a) < 100 && reach(view.b) < 100);
    float const tolerance =
        1e-4F * scaled.GetHeight().value() * (1 + reach(view.a) + reach(view.b)) * (1 + reach(view.a) + reach(view.b));
    RC_ASSERT(std::abs(measured - expected) <= tolerance);
}

RC_GTEST_PROP(EngineLaws, ATallerObjectMeasuresTaller, ()) {
    View const view = AnyView();
    Engine engine;
    engine.SetCalibrationParams(view.params);
    RC_PRE(engine.GetCalibrationStatus() == 1);
    unsigned int const foot = view.a.y.value;
    RC_PRE(foot > 2000U);
    unsigned int const small = *rc::gen::inRange(0U, foot - 1000U);
    reference::Measured const shorter = MeasureHeight(engine, view.a, small, Picture);
    reference::Measured const taller = MeasureHeight(engine, view.a, small + 1000U, Picture);
    RC_PRE(shorter.error.empty() && taller.error.empty());
    RC_PRE(engine.UnprojectPoint(view.a).y > 0);
    RC_ASSERT(taller.value > shorter.value);
}

}  // namespace
}  // namespace qel::algorithm::calibration
