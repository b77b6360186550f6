#include "qel/algorithm/calibration/matrix.hpp"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace qel::algorithm::calibration {
namespace {

TEST(MatrixInverse, OfKnownMatricesIsExact) {
    struct Case {
        char const* name;
        Matrix matrix, inverse;
    };
    Case const cases[] = {
        {"identity", {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}},
        {"diagonal", {{{2, 0, 0}, {0, 4, 0}, {0, 0, -8}}}, {{{0.5F, 0, 0}, {0, 0.25F, 0}, {0, 0, -0.125F}}}},
        {"permutation", {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}, {{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}},
        {"every element", {{{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}}, {{{-24, 18, 5}, {20, -15, -4}, {-5, 4, 1}}}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(MatrixInverse(c.matrix), c.inverse);
    }
}

TEST(MatrixInverse, OfTheIdentityHasNoNegativeZero) {
    for (auto const& row : MatrixInverse({{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}})) {
        for (float const element : row) EXPECT_FALSE(std::signbit(element));
    }
}

TEST(MatrixInverse, OfASingularMatrixIsNotFiniteAndThrowsNothing) {
    Matrix const matrices[] = {
        {},
        {{{1, 2, 3}, {2, 4, 6}, {1, 0, 1}}},
        {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}},
    };
    for (Matrix const& matrix : matrices) {
        Matrix inverse{};
        EXPECT_NO_THROW(inverse = MatrixInverse(matrix));
        for (auto const& row : inverse) {
            for (float const element : row) EXPECT_FALSE(std::isfinite(element));
        }
    }
}

TEST(MatrixInverse, MultipliesByTheReciprocalRatherThanDividing) {
    float const product = 3.0F * (1.0F / 15.0F);
    ASSERT_NE(product, 3.0F / 15.0F);
    EXPECT_EQ(MatrixInverse({{{5, 0, 0}, {0, 3, 0}, {0, 0, 1}}})[0][0], product);
}

TEST(MatrixInverse, TimesTheMatrixIsNearlyTheIdentity) {
    std::mt19937 random(20261121);
    std::uniform_real_distribution<float> element(-1, 1);
    for (int round = 0; round < 1000; ++round) {
        Matrix matrix{};
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                matrix[row][column] = element(random) + (row == column ? 3.0F : 0.0F);
            }
        }
        Matrix const inverse = MatrixInverse(matrix);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                float sum = 0;
                for (std::size_t k = 0; k < 3; ++k) sum += matrix[row][k] * inverse[k][column];
                EXPECT_NEAR(sum, row == column ? 1.0F : 0.0F, 1e-5F);
            }
        }
    }
}

}  // namespace
}  // namespace qel::algorithm::calibration
