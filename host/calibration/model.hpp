#pragma once

#include <array>
#include <cmath>
#include <numbers>

#include "qel/geometry/dimension.hpp"
#include "qel/geometry/point.hpp"

namespace qel::host::calibration {

/// A picture's size in pixels.
using Size = geometry::Dimension<int, 2>;

/// A position in a picture, in pixels: (0, 0) is its top left corner, (width, height) its bottom right one.
template <class T>
using Position = geometry::Point<T, 2>;
using Pixel = Position<double>;

/// How a camera is mounted: tilt, roll and vertical field of view in degrees, height in metres.
template <class T>
struct Mounting {
    T tilt{};
    T roll{};
    T height{};
    T verticalFov{};
};

/// The formulas of algorithm::calibration::Engine for any number type: in double precision, or with derivatives.
///
/// Tests hold it equal to the engine within what single precision rounds away.
template <class T>
class Model {
public:
    struct Ground {
        T x, y;
        /// 1 / depth: positive in front of the camera, not positive on and above the horizon, where x and y mean
        /// nothing.
        T scale;
    };

    Model(Mounting<T> const& mounting, Size size) : size_(size), aspect_(double(size.height) / double(size.width)) {
        using std::cos;
        using std::sin;
        using std::tan;
        constexpr double Degree = std::numbers::pi / 180;
        T const f = 1.0 / tan(mounting.verticalFov * (0.5 * Degree));
        T const g = aspect_ * f;
        T const t = (mounting.tilt - 90.0) * Degree;
        T const r = mounting.roll * Degree;
        T const sinT = sin(t), cosT = cos(t), sinR = sin(r), cosR = cos(r);
        T const& h = mounting.height;
        m_ = {{{g * cosR, -g * cosT * sinR, -g * h * sinT * sinR},
               {f * sinR, f * cosT * cosR, f * h * sinT * cosR},
               {T(0.0), -sinT, h * cosT}}};
        vertical_ = {g * sinT * sinR, -f * sinT * cosR, -cosT};
        Invert();
    }

    /// Ground position in metres.
    Ground Unproject(Position<T> const& pixel) const {
        return UnprojectLogical({pixel.x * (2.0 / size_.width) - 1.0, ToLogicalY(pixel.y)});
    }

    /// Distance in metres between two points of the ground.
    static T GetDistance(Ground const& a, Ground const& b) {
        using std::sqrt;
        T const dx = a.x - b.x;
        T const dy = a.y - b.y;
        return sqrt(dx * dx + dy * dy);
    }

    /// Height in metres at which a point above the ground is seen in the picture row top.
    T GetObliqueHeight(Ground const& foot, T const& top) const {
        T const t = ToLogicalY(top);
        return ((m_[1][0] - m_[2][0] * t) * foot.x + (m_[1][1] - m_[2][1] * t) * foot.y + m_[1][2] - m_[2][2] * t) /
               (t * vertical_[2] - vertical_[1]);
    }

    /// An object's vertical extent in pixels laid sideways from its foot, in metres.
    T GetSteepHeight(Position<T> const& foot, T const& extent) const {
        T const share = foot.x * (1.0 / size_.width) + extent * (1.0 / size_.height);
        T const side = share < T(1.0) ? T(2.0 * share - 1.0) : T(1.0);
        Ground const start = Unproject(foot);
        return aspect_ * (UnprojectLogical({side, ToLogicalY(foot.y)}).x - start.x);
    }

    /// Where a point of the ground is seen; requires a point in front of the camera, not checked.
    Position<T> Project(T const& x, T const& y) const {
        T const depth = m_[2][0] * x + m_[2][1] * y + m_[2][2];
        T const u = (m_[0][0] * x + m_[0][1] * y + m_[0][2]) / depth;
        T const v = (m_[1][0] * x + m_[1][1] * y + m_[1][2]) / depth;
        return {(u + 1.0) * (0.5 * size_.width), (1.0 - v) * (0.5 * size_.height)};
    }

private:
    using Rows = std::array<std::array<T, 3>, 3>;

    T ToLogicalY(T const& y) const { return 1.0 - y * (2.0 / size_.height); }

    Ground UnprojectLogical(Position<T> const& p) const {
        T const w = n_[2][0] * p.x + n_[2][1] * p.y + n_[2][2];
        return {(n_[0][0] * p.x + n_[0][1] * p.y + n_[0][2]) / w, (n_[1][0] * p.x + n_[1][1] * p.y + n_[1][2]) / w, w};
    }

    void Invert() {
        auto const cofactor = [this](std::size_t row, std::size_t column) {
            std::size_t const r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
            return T(m_[r1][c1] * m_[r2][c2] - m_[r1][c2] * m_[r2][c1]);
        };
        T const determinant = m_[0][0] * cofactor(0, 0) + m_[0][1] * cofactor(0, 1) + m_[0][2] * cofactor(0, 2);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) n_[column][row] = cofactor(row, column) / determinant;
        }
    }

    Size size_;
    double aspect_;
    Rows m_{}, n_{};
    std::array<T, 3> vertical_{};
};

}  // namespace qel::host::calibration
