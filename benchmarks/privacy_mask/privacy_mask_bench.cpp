// Masking two zones of 200 x 200 pixels, or what moves, in a frame of 1920 x 1080 beside copying the frame. Each frame
// is copied afresh before it is masked, as in a run, and that is not timed.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "privacy_mask.hpp"
#include "support/ratios.hpp"

namespace qel::benchmarks {
namespace {

using media::ColourFormat;
using privacy_mask::Mode;
using privacy_mask::MovingPart;
using privacy_mask::PrivacyMask;
using Frame = media::video::FrameBase<void>;

constexpr geometry::Dimension<unsigned int, 2> Size{1920, 1080};

void Copy(Frame const& from, Frame const& to) {
    for (std::size_t i = 0; i < Frame::MaxPlanes; ++i) {
        if (to.GetPlane(i)) {
            std::memcpy(to.GetPlane(i).GetBuffer(), from.GetPlane(i).GetBuffer(), to.GetPlane(i).GetSize());
        }
    }
}

std::uint8_t At(Frame const& frame, std::size_t x, std::size_t y, std::size_t bytes) {
    auto const& plane = frame.GetPlane(0);
    return static_cast<std::uint8_t const*>(
        plane.GetBuffer())[y * static_cast<std::size_t>(plane.GetStride()) + x * bytes];
}

struct Case {
    std::string name;
    Mode mode;
    MovingPart moving;
    ColourFormat format;
};

/// A mask that is ready, a frame of noise and a frame to work on.
struct Data {
    explicit Data(Case const& c) : original(c.format, Size, {}, {}), frame(c.format, Size, {}, {}) {
        std::mt19937 random(1);
        for (auto const& plane : original.GetPlanes()) {
            auto* const bytes = static_cast<std::uint8_t*>(plane.GetBuffer());
            for (std::size_t i = 0; i < plane.GetSize(); ++i) bytes[i] = static_cast<std::uint8_t>(random() % 200 + 20);
        }
        auto zones = std::make_shared<privacy_mask::Zones const>(privacy_mask::ParseZones(
            "100.5,80.5 299.5,80.5 299.5,279.5 100.5,279.5; 1200.5,600.5 1399.5,600.5 1399.5,799.5 1200.5,799.5"));
        mask.ChangeSettings([&](privacy_mask::Settings& settings) {
            settings.zones = std::move(zones);
            settings.mode = c.mode;
            settings.movingPart = c.moving;
        });
        result.foreground.Resize(Size);
        for (unsigned int y = 300; y < 500; ++y) result.foreground.GetData()[y * 60 + 20] = ~0U;
        Check(c);
    }

    /// Throws when a pixel in a corner of a zone is not masked, or one beside it is.
    void Check(Case const& c) {
        Copy(original, frame);
        mask.Process(frame, result);
        std::size_t const bytes = c.format == ColourFormat::Nv12 || c.format == ColourFormat::Grey8 ? 1 : 3;
        bool const inside = At(frame, 101, 81, bytes) == At(original, 101, 81, bytes) &&
                            At(frame, 102, 82, bytes) == At(original, 102, 82, bytes);
        if (inside || At(frame, 98, 81, bytes) != At(original, 98, 81, bytes)) {
            throw std::runtime_error(c.name + " masks other pixels than it should");
        }
    }

    Frame original, frame;
    PrivacyMask mask;
    algorithm::video::Result result;
};

template <class Action>
void Time(benchmark::State& state, Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(time.count());
}

void Register(Case const& c) {
    auto const data = std::make_shared<Data>(c);
    auto const add = [&c](char const* contestant, auto run) {
        benchmark::RegisterBenchmark((c.name + "/" + contestant).c_str(), run)->UseManualTime();
    };
    add("qel", [data](benchmark::State& state) {
        for (auto _ : state) {
            Copy(data->original, data->frame);
            Time(state, [&] { data->mask.Process(data->frame, data->result); });
        }
    });
    add("copy", [data](benchmark::State& state) {
        for (auto _ : state) Time(state, [&] { Copy(data->original, data->frame); });
    });
}

}  // namespace
}  // namespace qel::benchmarks

int main(int argc, char** argv) {
    using namespace qel::benchmarks;
    return RunProgram(argc, argv, [] {
        struct Format {
            char const* name;
            ColourFormat format;
        };
        for (Format const& f : {Format{"Nv12", ColourFormat::Nv12},
                                {"Grey8", ColourFormat::Grey8},
                                {"Yuv24", ColourFormat::Yuv24},
                                {"Rgb24", ColourFormat::Rgb24}}) {
            Register({std::string("blank ") + f.name, Mode::Blank, MovingPart::None, f.format});
            Register({std::string("pixelate ") + f.name, Mode::Pixelate, MovingPart::None, f.format});
        }
        Register({"pixelate and shapes Nv12", Mode::Pixelate, MovingPart::Shapes, ColourFormat::Nv12});
        Register({"pixelate and boxes Nv12", Mode::Pixelate, MovingPart::Boxes, ColourFormat::Nv12});
    });
}
