#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string>

/// A slow model of the camera engine: every single operation rounds to a float of its own, in a fixed order.
namespace qel::reference {

/// A float whose every operation is stored before the next one begins, so that no compiler can join or reorder two.
class Single {
public:
    constexpr Single(float value) : value_(value) {}  // NOLINT(google-explicit-constructor): stands for a float
    constexpr float Get() const { return value_; }

    friend Single operator+(Single a, Single b) { return Store(a.value_ + b.value_); }
    friend Single operator-(Single a, Single b) { return Store(a.value_ - b.value_); }
    friend Single operator*(Single a, Single b) { return Store(a.value_ * b.value_); }
    friend Single operator/(Single a, Single b) { return Store(a.value_ / b.value_); }
    friend Single operator-(Single a) { return Store(-a.value_); }

private:
    static Single Store(float result) {
        float volatile stored = result;
        return {stored};
    }

    float value_;
};

struct Mounting {
    float tilt, roll, height, fov;
};

struct Measured {
    float value = 0;
    std::string error;  // what went wrong, empty when value holds
};

class CalibrationModel {
public:
    /// Without a width or a height nothing is known: every point is the ground's origin.
    CalibrationModel(Mounting mounting, int width, int height) : mounting_(mounting) {
        if (width == 0 || height == 0) return;
        aspect_ = Single(static_cast<float>(height)) / Single(static_cast<float>(width));
        Build();
    }

    int Status() const {
        float const limit = (Single(mounting_.fov) * 0.5F + 10.0F).Get();
        double const inner = std::fabs(static_cast<double>(mounting_.tilt));
        auto const offVertical = static_cast<float>(std::fabs(inner - 90.0));
        return limit < offVertical ? 1 : 0;
    }

    static float LogicalX(unsigned int x) { return (Single(2) * static_cast<float>(x) / 65536.0F - 1.0F).Get(); }
    static float LogicalY(unsigned int y) { return (Single(1) - Single(2) * static_cast<float>(y) / 65536.0F).Get(); }

    struct Position {
        float x = 0, y = 0;
        bool onHorizon = true;
    };

    Position Unproject(float u, float v) const {
        Single const w = Row(inverse_[2], u, v);
        if (w.Get() == 0.0F) return {};
        return {(Row(inverse_[0], u, v) / w).Get(), (Row(inverse_[1], u, v) / w).Get(), false};
    }

    float Distance(unsigned int ax, unsigned int ay, unsigned int bx, unsigned int by) const {
        Position const a = Unproject(LogicalX(ax), LogicalY(ay));
        Position const b = Unproject(LogicalX(bx), LogicalY(by));
        Single const dx = Single(a.x) - b.x;
        Single const dy = Single(a.y) - b.y;
        return std::sqrt((dx * dx + dy * dy).Get());
    }

    Measured Height(unsigned int x, unsigned int y, unsigned int extent) const {
        float const v = LogicalY(y);
        Position const foot = Unproject(LogicalX(x), v);
        if (!foot.onHorizon && std::fabs(foot.y) > 500.0F) return {0, "Target is too far"};
        float result = 0;
        if (Status() == 1) {
            Single const t = LogicalY(y >= extent ? y - extent : 0);
            Single const alongX = (ground_[1][0] - ground_[2][0] * t) * foot.x;
            Single const alongY = (ground_[1][1] - ground_[2][1] * t) * foot.y;
            Single const above = alongX + alongY + ground_[1][2] - ground_[2][2] * t;
            Single const below = t * vertical_[2] - vertical_[1];
            result = (above / below).Get();
        } else {
            unsigned int const sum = x + extent;
            float const side = sum >= 65536 ? 0.999969482421875F : sum == 0 ? -1.0F : LogicalX(sum);
            result = (aspect_ * (Single(Unproject(side, v).x) - foot.x)).Get();
        }
        if (result < 0) return {0, "Negative height"};
        return {result, {}};
    }

private:
    using Row3 = std::array<Single, 3>;
    using Rows = std::array<Row3, 3>;

    static Single Row(Row3 const& row, float u, float v) { return row[0] * u + row[1] * v + row[2]; }

    static Single Radians(Single degrees) { return degrees * 3.1415927F / 180.0F; }

    void Build() {
        Single const f = Single(1) / std::tan(Radians(Single(mounting_.fov) * 0.5F).Get());
        Single const g = aspect_ * f;
        float const t = Radians(Single(mounting_.tilt) - 90.0F).Get();
        float const r = Radians(mounting_.roll).Get();
        Single const sinT = std::sin(t), cosT = std::cos(t), sinR = std::sin(r), cosR = std::cos(r);
        Single const h = mounting_.height;
        ground_ = {Row3{g * cosR, -(g * cosT * sinR), -(g * h * sinT * sinR)},
                   Row3{f * sinR, f * cosT * cosR, f * h * sinT * cosR}, Row3{0.0F, -sinT, h * cosT}};
        vertical_ = {g * sinT * sinR, -(f * sinT * cosR), -cosT};
        inverse_ = Inverse(ground_);
    }

    /// Going round the rows and the columns, each cofactor is the product of one diagonal less that of the other.
    static Rows Inverse(Rows const& m) {
        auto const cofactor = [&](std::size_t row, std::size_t column) {
            std::size_t const r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
            return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
        };
        Single const determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
        Single const reciprocal = Single(1) / determinant;
        Rows result = m;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) result[column][row] = cofactor(row, column) * reciprocal;
        }
        return result;
    }

    Mounting mounting_;
    Single aspect_ = 0.0F;
    Rows ground_{Row3{0, 0, 0}, Row3{0, 0, 0}, Row3{0, 0, 0}};
    Rows inverse_ = ground_;
    Row3 vertical_{0, 0, 0};
};

}  // namespace qel::reference
