#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <vector>

#include <boost/polygon/polygon.hpp>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/geometry/polygon.hpp"
#include "reference/pixels.hpp"

namespace qel::reference {

using Region = boost::polygon::polygon_set_data<int>;
using Trapezoid = boost::polygon::polygon_data<int>;

inline Region Combine(std::vector<geometry::Polygon<int>> const& polygons) {
    using namespace boost::polygon::operators;
    Region region;
    for (geometry::Polygon<int> const& polygon : polygons) {
        std::vector<boost::polygon::point_data<int>> points;
        for (auto const& point : polygon) points.emplace_back(point.x, point.y);
        boost::polygon::polygon_data<int> data;
        data.set(points.begin(), points.end());
        region ^= data;
    }
    return region;
}

/// The trapezoids of a region, with Boost.Polygon's own types.
inline std::vector<Trapezoid> Cut(Region const& region) {
    std::vector<Trapezoid> trapezoids;
    region.get_trapezoids(trapezoids, boost::polygon::HORIZONTAL);
    return trapezoids;
}

/// Whether a side passes next to a corner on its left, among negative columns: what Boost.Polygon may mix up.
inline bool MayBeMixedUp(Region const& region) {
    for (auto const& element : region) {
        for (auto const& corner : {element.first.first, element.first.second}) {
            for (auto const& side : region) {
                auto const &a = side.first.first, &b = side.first.second;
                int const bottom = std::min(a.y(), b.y()), top = std::max(a.y(), b.y());
                if (bottom == top || corner.x() > 0 || corner.y() < bottom || corner.y() > top) continue;
                double const along = (1.0 * corner.y() - a.y()) / (1.0 * b.y() - a.y());
                double const distance = corner.x() - (a.x() + along * (1.0 * b.x() - a.x()));
                if (distance > 0 && distance < 2) return true;
            }
        }
    }
    return false;
}

/// Cut in a process of its own, where Boost.Polygon may crash and lose memory; nothing when it does crash.
inline std::optional<std::vector<Trapezoid>> CutApart(Region const& region) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("No pipe for Boost.Polygon's trapezoids");
    pid_t const child = fork();
    if (child < 0) throw std::runtime_error("No process for Boost.Polygon");
    if (child == 0) {
        // Of a crash nobody reads, and no fuzzer leaves a file.
        close(STDERR_FILENO);
        rlimit const none{};
        setrlimit(RLIMIT_NOFILE, &none);
        std::FILE* const out = fdopen(ends[1], "wb");
        for (Trapezoid const& trapezoid : Cut(region)) {
            for (auto const& point : trapezoid) {
                int const numbers[] = {static_cast<int>(trapezoid.size()), point.x(), point.y()};
                std::fwrite(numbers, sizeof numbers, 1, out);
            }
        }
        _exit(std::fflush(out));
    }
    close(ends[1]);
    std::FILE* const in = fdopen(ends[0], "rb");
    std::vector<Trapezoid> trapezoids;
    std::vector<boost::polygon::point_data<int>> points;
    for (int numbers[3]; std::fread(numbers, sizeof numbers, 1, in) == 1;) {
        points.emplace_back(numbers[1], numbers[2]);
        if (points.size() < static_cast<std::size_t>(numbers[0])) continue;
        trapezoids.emplace_back(points.begin(), points.end());
        points.clear();
    }
    std::fclose(in);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    if (status != 0) return std::nullopt;
    return trapezoids;
}

/// A region that begins this many columns further right.
inline Region Move(Region const& region, int columns) {
    Region moved;
    for (auto const& [ends, count] : region) {
        auto const& [a, b] = ends;
        moved.insert(Region::element_type({{a.x() + columns, a.y()}, {b.x() + columns, b.y()}}, count));
    }
    return moved;
}

/// The trapezoids of the polygons' region. Boost.Polygon can crash where columns are negative; then those that it cuts
/// further right, moved back.
inline std::vector<Trapezoid> Trapezoids(std::vector<geometry::Polygon<int>> const& polygons) {
    Region const region = Combine(polygons);
    region.clean();
    if (!MayBeMixedUp(region)) return Cut(region);
    if (auto const trapezoids = CutApart(region)) return *trapezoids;
    int left = 0;
    for (auto const& element : region) left = std::min({left, element.first.first.x(), element.first.second.x()});
    std::vector<Trapezoid> trapezoids = Cut(Move(region, -left));
    for (Trapezoid& trapezoid : trapezoids) boost::polygon::move(trapezoid, boost::polygon::HORIZONTAL, left);
    return trapezoids;
}

/// Whether a trapezoid is a line only: fewer than three points, but for the one that closes it.
inline bool IsSpike(std::vector<boost::polygon::point_data<int>> const& points) {
    return points.size() < (points.front() == points.back() ? 4U : 3U);
}

/// The mask after FillPolygonSet: each row of each trapezoid worked out for itself, in 64 bits, pixel by pixel.
inline algorithm::BitMask FillPolygonSet(algorithm::BitMask mask, std::vector<geometry::Polygon<int>> const& polygons,
                                         unsigned int value) {
    using Number = std::int64_t;
    Number const width = mask.GetSize().width, height = mask.GetSize().height;
    for (auto const& trapezoid : Trapezoids(polygons)) {
        std::vector<boost::polygon::point_data<int>> const points(trapezoid.begin(), trapezoid.end());
        if (IsSpike(points)) continue;
        std::vector<Number> ys;
        for (auto const& p : points) ys.push_back(p.y());
        auto const [least, most] = std::minmax_element(ys.begin(), ys.end());
        Number const yMin = *least, yMax = *most;
        auto const span = [&](Number y, bool largest) {
            std::vector<Number> xs;
            for (auto const& p : points) {
                if (p.y() == y) xs.push_back(p.x());
            }
            return largest ? *std::max_element(xs.begin(), xs.end()) : *std::min_element(xs.begin(), xs.end());
        };
        Number xa0 = span(yMin, false), xa1 = span(yMin, true), xb0 = span(yMax, false), xb1 = span(yMax, true);
        if (yMax < 0 || yMin >> 4 >= height) continue;
        Number yStart = (yMin + 8) >> 4 << 4, yEnd = (yMax + 8) >> 4 << 4, dy = yEnd - yStart;
        if (dy <= 0) continue;
        if (yStart < 0) {
            xa0 = (xa0 * yEnd + -yStart * xb0) / dy;
            xa1 = (xa1 * yEnd + -yStart * xb1) / dy;
            yStart = 0;
            dy = yEnd;
            if (yEnd == 0) continue;
        }
        if (yEnd >= 16 * height) {
            Number const yTop = 16 * (height - 1), d = yTop - yStart;
            if (d < 1) continue;
            xb0 = ((yEnd - yTop) * xa0 + d * xb0) / dy;
            xb1 = ((yEnd - yTop) * xa1 + d * xb1) / dy;
            yEnd = yTop;
            dy = d;
        }
        for (Number y = yStart; y <= yEnd; y += 16) {
            Number const left = (xa0 * dy + (xb0 - xa0) * (y - yStart)) / dy;
            Number const right = (xa1 * dy + (xb1 - xa1) * (y - yStart)) / dy;
            for (Number x = std::max<Number>((left + 8) >> 4, 0); x <= (right + 8) >> 4 && x < width; ++x) {
                Set(mask, static_cast<unsigned int>(x), static_cast<unsigned int>(y / 16), value != 0);
            }
        }
    }
    return mask;
}

}  // namespace qel::reference
