// The camera engine against its step-by-step reference, bit for bit, for any mounting, size and points at all.
#include <bit>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "input.hpp"
#include "qel/algorithm/calibration/engine.hpp"
#include "reference/calibration.hpp"

namespace {

using qel::algorithm::calibration::Engine;
using qel::fuzz::Check;
using qel::fuzz::Input;
namespace reference = qel::reference;

bool SameBits(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

/// Mostly a number in thousandths, sometimes any float.
float Real(Input& input) {
    if (input.Byte() % 4 == 0) return std::bit_cast<float>(input.Word());
    return static_cast<float>(static_cast<std::int32_t>(input.Word()) % 400000) / 1000.0F;
}

unsigned int Coordinate(Input& input) { return input.Number(0, 65535); }

Engine::Point At(unsigned int x, unsigned int y) {
    return {{static_cast<unsigned short>(x)}, {static_cast<unsigned short>(y)}};
}

reference::Measured Height(Engine const& engine, Engine::Point foot, unsigned int extent,
                           qel::geometry::Dimension<int, 2> const& size) {
    try {
        return {engine.GetHeight(foot, {static_cast<unsigned short>(extent)}, size).value(), {}};
    } catch (std::runtime_error const& error) {
        return {0, error.what()};
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t dataSize) {
    Input input(data, dataSize);
    reference::Mounting mounting{};
    for (float* const value : {&mounting.tilt, &mounting.roll, &mounting.height, &mounting.fov}) *value = Real(input);
    qel::geometry::Dimension<int, 2> const size{input.Corner(4000), input.Corner(4000)};
    Engine engine;
    engine.SetCalibrationParams(
        {mounting.tilt, mounting.roll, mounting.height * boost::units::si::meters, mounting.fov});
    reference::CalibrationModel const model(mounting, size.width, size.height);
    Check(engine.GetCalibrationStatus() == model.Status(), "status");
    for (int round = 0; round < 4; ++round) {
        unsigned int const ax = Coordinate(input), ay = Coordinate(input), bx = Coordinate(input),
                           by = Coordinate(input);
        Check(SameBits(engine.GetDistance(At(ax, ay), At(bx, by), size).value(), model.Distance(ax, ay, bx, by)),
              "distance");
        auto const position = engine.UnprojectPoint(At(ax, ay));
        auto const expected = model.Unproject(model.LogicalX(ax), model.LogicalY(ay));
        Check(SameBits(position.x, expected.x) && SameBits(position.y, expected.y), "position");
        reference::Measured const measured = Height(engine, At(ax, ay), by, size);
        reference::Measured const wanted = model.Height(ax, ay, by);
        Check(measured.error == wanted.error && SameBits(measured.value, wanted.value), "height");
    }
    return 0;
}
