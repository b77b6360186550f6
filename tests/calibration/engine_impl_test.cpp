#include "calibration/engine_impl.hpp"

#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "calibration/scene.hpp"
#include "support/message_of.hpp"

namespace qel::algorithm::calibration {
namespace {

using namespace test;
using Impl = Engine::Impl;

constexpr float Beyond500 = 500.00003F;

/// A record whose ground position is (0, y) for every picture point.
Impl Facing(float y, int status) {
    Impl impl;
    impl.status = status;
    impl.imageToGround = {{{0, 0, 0}, {0, 0, y}, {0, 0, 1}}};
    return impl;
}

std::string ErrorOfHeight(Impl const& impl) {
    return qel::test::MessageOf<std::runtime_error>([&] { impl.GetHeight(At(30000, 40000), 0); });
}

TEST(EngineImpl, StartsWithoutAModel) {
    Impl const impl;
    EXPECT_EQ(impl.params, Params());
    EXPECT_EQ(impl.status, -1);
    EXPECT_FALSE(impl.IsCalibrationValid());
    EXPECT_EQ(impl.dimension, (geometry::Dimension<int, 2>{0, 0}));
    EXPECT_EQ(impl.aspectRatio, 0.0F);
    EXPECT_EQ(impl.groundToImage, Matrix{});
    EXPECT_EQ(impl.imageToGround, Matrix{});
    EXPECT_EQ(impl.verticalAxis, (std::array<float, 3>{}));
}

TEST(EngineImpl, IsValidUnlessItsStatusIsNegative) {
    for (int const status : {-5, -4, -3, -1, 0, 1, 2}) {
        Impl impl;
        impl.status = status;
        EXPECT_EQ(impl.IsCalibrationValid(), status >= 0) << status;
    }
}

TEST(EngineImpl, ReplacesAnyFormerStatus) {
    for (int const former : {-5, -1, 0, 1, 7}) {
        Impl impl;
        impl.status = former;
        impl.params = Params(200, 0, Metres(0.1F), 300);
        impl.UpdateStatus();
        EXPECT_EQ(impl.status, 0) << former;
    }
}

TEST(EngineImpl, HasLogicalCoordinatesWithTheOriginInTheMiddle) {
    struct Case {
        unsigned int x, y;
        float logicalX, logicalY;
    };
    constexpr Case Cases[] = {
        {0, 0, -1, 1},
        {32768, 32768, 0, 0},
        {65535, 65535, 0.999969482421875F, -0.999969482421875F},
        {16384, 49152, -0.5F, -0.5F},
        {1, 65534, -0.999969482421875F, -0.99993896484375F},
    };
    for (Case const& c : Cases) {
        EXPECT_EQ(Impl::GetLogicalCoord(At(c.x, c.y)), (geometry::Point<float, 2>{c.logicalX, c.logicalY})) << c.x;
    }
}

TEST(EngineImpl, UnprojectsByTheMatrixAndTakesTheHorizonForTheOrigin) {
    Impl impl;
    impl.imageToGround = {{{1, 2, 3}, {4, 5, 6}, {2, -4, 0}}};
    EXPECT_EQ(impl.UnprojectPoint({0.5F, 0}), (geometry::Point<float, 2>{3.5F, 8}));
    EXPECT_EQ(impl.UnprojectPoint({0.5F, 0.25F}), (geometry::Point<float, 2>{0, 0}));
    EXPECT_EQ(impl.UnprojectPoint({-0.0F, 0.0F}), (geometry::Point<float, 2>{0, 0}));
}

TEST(EngineImpl, BuildsNothingWithoutAStatusOrAPicture) {
    struct Case {
        char const* name;
        int status;
        geometry::Dimension<int, 2> dimension;
    };
    constexpr Case Cases[] = {
        {"no mounting", -1, {768, 576}}, {"no width", 1, {0, 576}}, {"no height", 1, {768, 0}}, {"nothing", 1, {0, 0}}};
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.name);
        Impl impl;
        impl.params = Params(20, 0, Metres(5), 50);
        impl.status = c.status;
        impl.dimension = c.dimension;
        impl.RecalculateModel();
        EXPECT_EQ(impl.aspectRatio, 0.0F);
        EXPECT_EQ(impl.groundToImage, Matrix{});
    }
}

TEST(EngineImpl, BuildsTheModelOfALevelCameraAsDrawnOnPaper) {
    Impl impl;
    impl.params = Params(0, 0, Metres(2), 90);
    impl.status = 1;
    impl.UpdateModel({200, 100});
    EXPECT_EQ(impl.aspectRatio, 0.5F);
    // f = 1, g = 1/2: x / depth, -height / depth, depth = Y.
    Matrix const expected{{{0.5F, 0, 0}, {0, 0, -2}, {0, 1, 0}}};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            EXPECT_NEAR(impl.groundToImage[row][column], expected[row][column], 1e-6F) << row << ' ' << column;
        }
    }
    EXPECT_NEAR(impl.verticalAxis[0], 0, 1e-6F);
    EXPECT_NEAR(impl.verticalAxis[1], 1, 1e-6F);
    EXPECT_NEAR(impl.verticalAxis[2], 0, 1e-6F);
    EXPECT_EQ(impl.imageToGround, MatrixInverse(impl.groundToImage));
}

TEST(EngineImpl, BuildsTheModelOnceForASize) {
    Impl impl;
    impl.params = Params(20, 0, Metres(5), 50);
    impl.status = 1;
    impl.UpdateModel({768, 576});
    Matrix const model = impl.groundToImage;
    impl.params.SetTilt(30);
    impl.UpdateModel({768, 576});
    EXPECT_EQ(impl.groundToImage, model);
    impl.UpdateModel({768, 577});
    EXPECT_NE(impl.groundToImage, model);
    EXPECT_EQ(impl.dimension, (geometry::Dimension<int, 2>{768, 577}));
}

TEST(EngineImpl, MeasuresHeightsUpTo500MetresAheadAndBehind) {
    struct Case {
        float y;
        char const* error;
    };
    constexpr Case Cases[] = {
        {0, "nothing was thrown"},
        {500, "nothing was thrown"},
        {-500, "nothing was thrown"},
        {Beyond500, "Target is too far"},
        {-Beyond500, "Target is too far"},
        {std::numeric_limits<float>::infinity(), "Target is too far"},
        {std::numeric_limits<float>::quiet_NaN(), "nothing was thrown"},
    };
    for (Case const& c : Cases) {
        SCOPED_TRACE(c.y);
        EXPECT_EQ(ErrorOfHeight(Facing(c.y, 0)), c.error);
        EXPECT_EQ(ErrorOfHeight(Facing(c.y, 1)), c.error);
    }
}

TEST(EngineImpl, NeverFindsTheHorizonTooFar) {
    Impl impl = Facing(1000, 0);
    impl.imageToGround[2] = {0, 0, 0};
    EXPECT_EQ(ErrorOfHeight(impl), "nothing was thrown");
}

TEST(EngineImpl, KnowsNoHeightForAnyOtherStatus) {
    EXPECT_EQ(ErrorOfHeight(Facing(1, 2)), "Invalid calibration parameters, calibration Error Code: 2");
    EXPECT_EQ(ErrorOfHeight(Facing(1, -4)), "Invalid calibration parameters, calibration Error Code: -4");
    EXPECT_EQ(ErrorOfHeight(Facing(1000, 2)), "Target is too far") << "the distance is checked first";
}

TEST(EngineImpl, TakesTheOriginWhereTheSidewaysPointIsOnTheHorizon) {
    Impl impl;
    impl.status = 0;
    impl.aspectRatio = 0.5F;
    // The foot at logical x = -0.5 lies at X = 2, and the horizon is the column of logical x = 0.
    impl.imageToGround = {{{0, 0, 1}, {0, 0, 1}, {-1, 0, 0}}};
    EXPECT_THROW(impl.GetHeight(At(16384, 30000), 16384), std::runtime_error) << "0.5 * (0 - 2) is negative";
    impl.aspectRatio = -0.5F;
    EXPECT_EQ(impl.GetHeight(At(16384, 30000), 16384), 1.0F);
}

}  // namespace
}  // namespace qel::algorithm::calibration
