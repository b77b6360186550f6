// The polygon-set fill beside OpenCV's fillPoly on the same corners, and beside the plain road by Boost.Polygon: one
// exclusive or after the other, its trapezoids, their rows. OpenCV's rules for the rim differ (ours paints both ends of
// every row, it draws an outline as well), so only the insides are compared with it.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/polygon/polygon.hpp>
#include <opencv2/imgproc.hpp>

#include "bit_mask/benches.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"
#include "support/masks.hpp"
#include "support/peers.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;
using Polygons = std::vector<geometry::Polygon<int>>;
using Outlines = std::vector<std::vector<cv::Point>>;

constexpr Size Canvas{1920, 1080};

/// A regular polygon, or a star when the inner radius is smaller. All in pixels.
geometry::Polygon<int> Star(double x, double y, double outer, double inner, int corners) {
    geometry::Polygon<int> polygon;
    for (int i = 0; i < corners; ++i) {
        double const angle = 0.1 + 2 * 3.14159265358979 * i / corners, radius = i % 2 == 0 ? outer : inner;
        polygon.push_back({static_cast<int>(std::lround(16 * (x + radius * std::cos(angle)))),
                           static_cast<int>(std::lround(16 * (y + radius * std::sin(angle))))});
    }
    return polygon;
}

Polygons Octagons(int count) {
    Polygons polygons;
    for (int i = 0; i < count; ++i) polygons.push_back(Star(60 + 90 * (i % 20), 60 + 90 * (i / 20), 40, 40, 8));
    return polygons;
}

Outlines ToOutlines(Polygons const& polygons) {
    Outlines outlines;
    for (auto const& polygon : polygons) {
        outlines.emplace_back();
        for (auto const& point : polygon) outlines.back().emplace_back(point.x, point.y);
    }
    return outlines;
}

using BoostPolygon = boost::polygon::polygon_data<int>;

std::vector<BoostPolygon> ToBoost(Polygons const& polygons) {
    std::vector<BoostPolygon> converted;
    for (auto const& polygon : polygons) {
        std::vector<boost::polygon::point_data<int>> points;
        for (auto const& point : polygon) points.emplace_back(point.x, point.y);
        converted.emplace_back(points.begin(), points.end());
    }
    return converted;
}

/// The rows of a trapezoid that lies inside the mask, between its ends rounded to rows.
void DrawTrapezoid(BitMask& mask, BoostPolygon const& trapezoid) {
    int yStart = trapezoid.begin()->y(), yEnd = yStart;
    for (auto const& point : trapezoid) {
        yStart = std::min(yStart, point.y());
        yEnd = std::max(yEnd, point.y());
    }
    int ends[2][2] = {{1 << 30, -(1 << 30)}, {1 << 30, -(1 << 30)}};
    for (auto const& point : trapezoid) {
        for (int side = 0; side < 2; ++side) {
            if (point.y() != (side == 0 ? yStart : yEnd)) continue;
            ends[side][0] = std::min(ends[side][0], point.x());
            ends[side][1] = std::max(ends[side][1], point.x());
        }
    }
    yStart = (yStart + 8) & ~15;
    yEnd = (yEnd + 8) & ~15;
    int const height = yEnd - yStart;
    for (int y = yStart; height > 0 && y <= yEnd; y += 16) {
        auto const column = [&](int end) {
            return ((ends[0][end] * height + (ends[1][end] - ends[0][end]) * (y - yStart)) / height + 8) >> 4;
        };
        algorithm::bit_mask::FillScanLine(mask.GetData().data() + static_cast<std::size_t>(y / 16) * mask.GetStride(),
                                          static_cast<unsigned int>(column(0)), static_cast<unsigned int>(column(1)),
                                          1);
    }
}

void FillBoost(BitMask& mask, std::vector<BoostPolygon> const& polygons) {
    using namespace boost::polygon::operators;
    boost::polygon::polygon_set_data<int> region;
    for (BoostPolygon const& polygon : polygons) region ^= polygon;
    std::vector<BoostPolygon> trapezoids;
    region.get_trapezoids(trapezoids, boost::polygon::HORIZONTAL);
    for (BoostPolygon const& trapezoid : trapezoids) DrawTrapezoid(mask, trapezoid);
}

void FillOpenCv(cv::Mat& image, Outlines const& outlines) { cv::fillPoly(image, outlines, 255, cv::LINE_8, 4); }

/// Neither holds what the other does not hold or touch.
void RequireAlike(BitMask const& ours, cv::Mat const& image, std::string const& name) {
    BitMask inside(Canvas), around(Canvas);
    algorithm::bit_mask::Erode8Way(ours.GetData().data(), inside.GetData().data(), Canvas.height, ours.GetStride());
    algorithm::bit_mask::Dilate8Way(ours.GetData().data(), around.GetData().data(), Canvas.height, ours.GetStride());
    cv::Mat const insideMat = ToMat(inside), aroundMat = ToMat(around);
    Require(cv::countNonZero(insideMat & ~image) == 0 && cv::countNonZero(image & ~aroundMat) == 0, name);
}

void Register(std::string const& shape, Polygons const& polygons) {
    std::string const name = "FillPolygonSet/" + Name(Canvas) + "/" + shape;
    Outlines const outlines = ToOutlines(polygons);
    BitMask mask(Canvas);
    algorithm::bit_mask::detail::FillPolygonSet(mask, polygons, 1);
    cv::Mat image = ToMat(BitMask(Canvas));
    FillOpenCv(image, outlines);
    RequireAlike(mask, image, name + ": OpenCV");
    std::vector<BoostPolygon> const boosts = ToBoost(polygons);
    BitMask plain(Canvas);
    FillBoost(plain, boosts);
    Require(plain == mask, name + ": plain Boost");
    benchmark::RegisterBenchmark((name + "/boost").c_str(), [=](benchmark::State& state) {
        BitMask out(Canvas);
        for (auto _ : state) FillBoost(out, boosts);
    });
    benchmark::RegisterBenchmark((name + "/qel").c_str(), [=](benchmark::State& state) {
        BitMask out(Canvas);
        for (auto _ : state) algorithm::bit_mask::detail::FillPolygonSet(out, polygons, 1);
    });
    benchmark::RegisterBenchmark((name + "/opencv").c_str(), [=](benchmark::State& state) {
        cv::Mat out = ToMat(BitMask(Canvas));
        for (auto _ : state) FillOpenCv(out, outlines);
    });
}

}  // namespace

void RegisterFillPolygon() {
    Register("octagon", {Star(900, 500, 200, 200, 8)});
    Register("convex-30", {Star(900, 500, 400, 400, 30)});
    Register("star-10", {Star(900, 500, 300, 120, 10)});
    Register("star-30", {Star(900, 500, 400, 250, 30)});
    Register("octagons-50", Octagons(50));
    Register("octagons-200", Octagons(200));
}

}  // namespace qel::benchmarks
