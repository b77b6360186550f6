// Masks, labelling, calibration and frames.
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "oom/sweep.hpp"
#include "qel/algorithm/bit_mask/check_rectangle.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "qel/algorithm/bit_mask/fill_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"
#include "qel/algorithm/bit_mask/flood_fill.hpp"
#include "qel/algorithm/bit_mask/threshold.hpp"
#include "qel/algorithm/calibration/engine.hpp"
#include "qel/algorithm/concom/blob_stats.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "qel/algorithm/line_by_line_connected_components.hpp"
#include "qel/algorithm/metadata/normalization.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::oom {
namespace {

using algorithm::BitMask;
using algorithm::ConnectedComponents;
using algorithm::LineByLineConnectedComponents;
using algorithm::calibration::Engine;
using algorithm::calibration::Params;
using algorithm::concom::BlobStats;
using geometry::Polygon;
using media::ColourFormat;
using Frame = media::video::FrameBase<void>;

constexpr auto Metre = boost::units::si::meters;

/// Speckles of a fixed pattern, so that there are many runs and blobs.
BitMask MakeSpeckles(unsigned int width, unsigned int height) {
    BitMask mask({width, height});
    std::uint32_t random = 12345;
    for (std::uint32_t& word : mask.GetData()) {
        random = random * 1664525U + 1013904223U;
        word = random ^ random >> 15U;
    }
    return mask;
}

std::string TextOf(BitMask const& mask) {
    std::string text = std::to_string(mask.GetSize().width) + 'x' + std::to_string(mask.GetSize().height);
    for (std::uint32_t const word : mask.GetData()) text.append(1, ' ').append(std::to_string(word));
    return text;
}

struct TwoMasks {
    BitMask source;
    BitMask target;
};

std::string TextOf(TwoMasks const& masks) { return TextOf(masks.source) + " | " + TextOf(masks.target); }

TwoMasks MakeMasks() { return {MakeSpeckles(70, 5), BitMask({40, 3})}; }

template <class Act>
Operation OnMasks(std::string name, Promise promise, Act act) {
    return MakeOperation("bit_mask/" + name, promise, MakeMasks, act, [](TwoMasks const& s) { return TextOf(s); });
}

template <class T>
std::ostringstream Print(T const& value) {
    std::ostringstream stream;
    stream << value;
    return stream;
}

struct Printed {
    std::ostringstream stream;
};

std::string TextOf(Printed const& printed) { return (printed.stream ? "good: " : "bad: ") + printed.stream.str(); }

/// Writes a value to a stream that has to make room for its text.
template <class T>
Operation Printing(std::string name, T const& value) {
    return MakeOperation(
        std::move(name), Promise::Stream, [] { return Printed(); },
        [value](Printed& s) {
            s.stream.clear();
            s.stream.str("");
            s.stream << value;
        },
        [](Printed const& s) { return TextOf(s); });
}

Operations MaskOperations() {
    using namespace algorithm::bit_mask;
    using geometry::Rectangle;
    Operations all{
        OnMasks("Construct", Promise::Strong,
                [](TwoMasks& s) {
                    s.target = BitMask({33, 4});
                }),
        OnMasks("Copy", Promise::Strong, [](TwoMasks& s) { s.target = s.source; }),
        OnMasks("Resize", Promise::Strong,
                [](TwoMasks& s) {
                    s.target.Resize({100, 20});
                }),
        OnMasks("Threshold", Promise::Strong,
                [](TwoMasks& s) {
                    static std::vector<std::uint8_t> const pixels(50 * 20, 7);
                    Threshold(pixels.data(), 50, {50, 20}, 6, s.target);
                }),
        OnMasks("FloodFill8Way", Promise::Basic,
                [](TwoMasks& s) {
                    s.target.Fill(0);
                    FloodFill8Way(s.source, s.target, {1, 1}, 1);
                }),
        OnMasks("WithoutAllocations", Promise::Strong,
                [](TwoMasks& s) {
                    auto& source = s.source;
                    source.Fill(1);
                    source.EraseRect(Rectangle<int>{1, 1, 20, 3}, 0);
                    source.EraseRect(Rectangle<unsigned int>{1, 1, 20, 3}, 0);
                    source.Union(source);
                    source.Difference(source);
                    source.Intersection(source);
                    FillRectangle(source, {3, 1, 30, 4}, 1);
                    FillScanLine(source.GetData().data(), 3, 60, 1);
                    BitMask const before = std::move(source);
                    source = BitMask();
                    std::swap(source, s.target);
                    std::swap(source, s.target);
                    static_cast<void>(CheckRectangle(before.GetData().data(), before.GetSize(), {3, 1, 30, 4}));
                }),
        OnMasks("Morphology", Promise::Strong,
                [](TwoMasks& s) {
                    auto const* const words = s.source.GetData().data();
                    std::uint32_t out[15];
                    Dilate8Way(words, out, 5, 3);
                    DilateLine8Way(words, words + 3, words + 6, out, 3);
                    Erode8Way(words, out, 5, 3);
                    ErodeLine8Way(words, words + 3, words + 6, out, 3);
                }),
        OnMasks("RefuseOtherSize", Promise::Strong,
                [](TwoMasks& s) { Caught<std::invalid_argument>([&] { s.source.Union(s.target); }); }),
        MakeOperation(
            "bit_mask/FloodFill8WayByRows", Promise::Basic,
            [] {
                TwoMasks masks{MakeSpeckles(300, 300), BitMask({300, 300})};
                for (std::uint32_t& word : masks.source.GetData()) word |= word << 1U;
                return masks;
            },
            [](TwoMasks& s) {
                s.target.Fill(0);
                FloodFill8Way(s.source, s.target, {150, 150}, 1);
            },
            [](TwoMasks const& s) { return TextOf(s); }),
        Printing("bit_mask/Print", BitMask({123456789, 0})),
    };
    return all;
}

Operations PolygonOperations() {
    using namespace algorithm::bit_mask;
    static Polygon<double> const convex{{2, 2}, {60.5, 10}, {30, 40}};
    static Polygon<double> const crossing{{1, 1}, {50, 50}, {50, 1}, {1, 50}, {25, 60.25}};
    static Polygon<double> const ring{{10, 10}, {40, 12}, {44, 44}, {8, 40}};
    auto const fill = [](std::string name, std::vector<Polygon<double>> polygons) {
        return MakeOperation(
            "bit_mask/" + name, Promise::Basic,
            [] {
                return BitMask({64, 64});
            },
            [polygons = std::move(polygons)](BitMask& mask) {
                mask.Fill(0);
                FillPolygons(mask, polygons, 1);
            },
            [](BitMask const& mask) { return TextOf(mask); });
    };
    return {
        fill("FillPolygonsConvex", {convex}),
        fill("FillPolygonsCrossing", {crossing}),
        fill("FillPolygonsSeveral", {convex, crossing, ring}),
        MakeOperation(
            "bit_mask/FillPolygonsRefused", Promise::Strong,
            [] {
                return std::pair(BitMask({64, 64}), std::string());
            },
            [](auto& s) {
                static std::vector<Polygon<double>> const far{{{0, 0}, {1e9, 0}, {0, 5}}};
                s.second = Caught<std::invalid_argument>([&] { FillPolygons(s.first, far, 1); });
            },
            [](auto const& s) { return s.second + TextOf(s.first); }),
        MakeOperation(
            "geometry/Polygon", Promise::Strong,
            [] {
                return Polygon<int>{{1, 2}};
            },
            [](Polygon<int>& polygon) {
                Polygon<int> longer(polygon.begin(), polygon.begin() + 1);
                longer.push_back({3, 4});
                polygon = longer;
            },
            [](Polygon<int> const& polygon) { return std::to_string(polygon.size()); }),
        Printing("geometry/PrintDimension", geometry::Dimension<unsigned int, 2>{123, 456}),
    };
}

struct Labelled {
    ConnectedComponents labeller;
    BitMask mask = MakeSpeckles(100, 60);
    std::vector<ConnectedComponents::Blob> blobs;
};

std::string TextOf(Labelled const& labelled) {
    std::string text;
    for (auto const& b : labelled.blobs) text += std::to_string(b.area) + "@" + std::to_string(b.firstX) + " ";
    return text;
}

Operations LabellingOperations() {
    struct Lines {
        LineByLineConnectedComponents labeller{100};
        BitMask mask = MakeSpeckles(100, 6);
        unsigned int row = 0;
        std::vector<BlobStats> finished{};
        std::string text{};
    };
    auto const text = [](Labelled const& s) { return TextOf(s); };
    auto const make = [] { return Labelled(); };
    return {
        MakeOperation(
            "concom/Connect8Way", Promise::Basic, make, [](Labelled& s) { s.labeller.Connect8Way(s.mask, 2, s.blobs); },
            text),
        MakeOperation(
            "concom/Connect4Way", Promise::Basic, make, [](Labelled& s) { s.labeller.Connect4Way(s.mask, 1, s.blobs); },
            text),
        MakeOperation(
            "concom/ConnectLargerMask", Promise::Basic,
            [] {
                Labelled labelled;
                labelled.labeller.Connect8Way(labelled.mask, 1, labelled.blobs);
                labelled.mask = MakeSpeckles(500, 100);
                return labelled;
            },
            [](Labelled& s) { s.labeller.Connect8Way(s.mask, 1, s.blobs); }, text),
        MakeOperation(
            "concom/ConstructConnectedComponents", Promise::Strong, make,
            [](Labelled& s) { s.labeller = ConnectedComponents(); }, text),
        MakeOperation(
            "concom/LineByLine8Way", Promise::Strong, [] { return Lines(); },
            [](Lines& s) {
                // Each row is taken or not: what runs out of memory is asked for again.
                s.labeller.LineByLine8Way(s.mask.GetData().data() + s.row * s.mask.GetStride(), s.finished);
                ++s.row;
            },
            [](Lines const& s) { return std::to_string(s.row) + ":" + std::to_string(s.finished.size()); }),
        MakeOperation(
            "concom/LineByLine8WayThatFinishesBlobs", Promise::Strong,
            [] {
                Lines lines;
                for (; lines.row < 3; ++lines.row) {
                    lines.labeller.LineByLine8Way(lines.mask.GetData().data() + lines.row * lines.mask.GetStride(),
                                                  lines.finished);
                }
                lines.finished = {};
                return lines;
            },
            [](Lines& s) {
                static std::vector<std::uint32_t> const empty(4, 0);
                s.labeller.LineByLine8Way(empty.data(), s.finished);
                s.row = 9;
            },
            [](Lines const& s) { return std::to_string(s.row) + ":" + std::to_string(s.finished.size()); }),
        MakeOperation(
            "concom/ConstructLineByLine", Promise::Strong, [] { return Lines(); },
            [](Lines& s) { s.labeller = LineByLineConnectedComponents(1000); },
            [](Lines const& s) { return std::to_string(s.row); }),
        Printing("concom/PrintBlobStats", BlobStats(1, 2, 3, 4, 5, 6, 7, 8)),
    };
}

std::string TextOf(Params const& params) { return Print(params).str(); }

struct Refused {
    Engine engine{};
    std::string reason{};
};

Operations CalibrationOperations() {
    auto const text = [](Engine const& engine) {
        return std::to_string(engine.GetCalibrationStatus()) + TextOf(engine.GetCalibrationParams());
    };
    auto const makeEngine = [] { return Engine(); };
    using Point = geometry::Point<geometry::normalized::Value<unsigned short>, 2>;
    return {
        MakeOperation(
            "calibration/Params", Promise::Strong, [] { return Params(); },
            [](Params& params) {
                Params const made(30, 5, 4.0F * Metre, 60);
                Params copy(made);
                copy.SetEnabled(false);
                copy.SetTilt(20);
                copy.SetRoll(1);
                copy.SetHeight(3.0F * Metre);
                copy.SetVerticalFov(50);
                params = copy;
            },
            [](Params const& params) { return TextOf(params); }),
        Printing("calibration/PrintParams", Params(30, 5, 4.0F * Metre, 60)),
        MakeOperation(
            "calibration/SetCalibrationParams", Promise::Strong, makeEngine,
            [](Engine& engine) { engine.SetCalibrationParams(Params(30, 5, 4.0F * Metre, 60)); }, text),
        MakeOperation(
            "calibration/Measure", Promise::Strong,
            [] {
                auto engine = std::make_unique<Engine>();
                engine->SetCalibrationParams(Params(30, 0, 4.0F * Metre, 60));
                return engine;
            },
            [](auto& engine) {
                Point const a{{30000}, {50000}}, b{{40000}, {60000}};
                static_cast<void>(engine->IsCalibrationEnabled());
                static_cast<void>(engine->UnprojectPoint(a));
                static_cast<void>(engine->GetDistance(a, b, {640, 480}));
                static_cast<void>(engine->GetHeight(a, {5000}, {640, 480}));
            },
            [text](auto const& engine) { return text(*engine); }),
        MakeOperation(
            "calibration/RefuseToMeasure", Promise::Strong, [] { return Refused(); },
            [](Refused& s) {
                s.reason = Caught<std::runtime_error>([&] {
                    static_cast<void>(s.engine.GetDistance({}, {}, {640, 480}));
                });
            },
            [text](Refused const& s) { return s.reason + text(s.engine); }),
        MakeOperation(
            "calibration/ConstructEngine", Promise::Strong, [] { return 0; },
            [](int& done) {
                Engine const engine;
                done = 1;
            },
            [](int done) { return std::to_string(done); }),
        MakeOperation(
            "metadata/Normalization", Promise::Strong, [] { return std::string(); },
            [](std::string& said) {
                algorithm::metadata::Normalization const n;
                said = Caught<std::out_of_range>([&] { n.GetMeanWithDeviation(3); });
            },
            [](std::string const& said) { return said; }),
    };
}

/// Frames that share pixels of a test, with how many do.
struct Shared {
    std::shared_ptr<int> count = std::make_shared<int>(0);
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(4);
    Frame frame{};

    // Callbacks that do not fit into a std::function.
    Frame Wrap() {
        auto const count1 = count, count2 = count;
        Frame::Planes planes;
        planes[0] = {16, pixels.data(), 4};
        return {planes,
                ColourFormat::Grey8,
                4,
                4,
                {},
                {},
                [count1, count2] { ++*count1; },
                [count1, count2] { --*count1; }};
    }
};

Operations FrameOperations() {
    auto const size = [](Frame const& frame) { return Print(frame.GetSize()).str(); };
    Operations all;
    for (int format = 0; format <= 4; ++format) {
        all.push_back(MakeOperation(
            "media_video/Allocate" + std::to_string(format), Promise::Strong, [] { return Frame(); },
            [format](Frame& frame) {
                frame = Frame(static_cast<ColourFormat>(format), 65, 33, {}, media::video::frame::Rotation::None);
            },
            size));
    }
    auto const text = [size](Shared const& s) { return std::to_string(*s.count) + size(s.frame); };
    all.push_back(MakeOperation(
        "media_video/Wrap", Promise::Strong, [] { return Shared(); }, [](Shared& s) { s.frame = s.Wrap(); }, text));
    all.push_back(MakeOperation(
        "media_video/Copy", Promise::Strong,
        [] {
            Shared shared;
            shared.frame = shared.Wrap();
            return shared;
        },
        [](Shared& s) {
            Frame const copy(s.frame);
            s.frame = copy;
        },
        text));
    all.push_back(MakeOperation(
        "media_video/RefuseOneCallback", Promise::Strong, [] { return Shared(); },
        [](Shared& s) {
            Caught<std::invalid_argument>([] { Frame({}, ColourFormat::Grey8, 1, 1, {}, {}, [] {}, {}); });
            Caught<std::invalid_argument>([] { Frame(static_cast<ColourFormat>(5), 1, 1, {}, {}); });
            s.frame = Frame();
        },
        text));
    all.push_back(Printing("media_video/PrintFrame", Frame()));
    all.push_back(Printing("media_video/PrintPlane", media::video::frame::PlaneBase<void const>()));
    return all;
}

}  // namespace

Operations ImageOperations() {
    Operations all;
    for (auto const& list :
         {MaskOperations, PolygonOperations, LabellingOperations, CalibrationOperations, FrameOperations}) {
        for (Operation& operation : list()) all.push_back(std::move(operation));
    }
    return all;
}

}  // namespace qel::oom
