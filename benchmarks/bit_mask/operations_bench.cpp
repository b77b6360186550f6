// Dilation, erosion and the Boolean combinations beside OpenCV (a byte a pixel), Leptonica (a bit a pixel; its bricks
// and its faster word accumulation) and copying the mask.
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "bit_mask/benches.hpp"
#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/erode.hpp"
#include "support/masks.hpp"
#include "support/peers.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;

/// Two masks and a result in the formats of all contestants.
struct Data {
    BitMask a, b, out;
    PixPtr pixA, pixB, pixOut;
    cv::Mat matA, matB, matOut;
};

struct Contestant {
    std::string name;
    std::function<void(Data&)> run;
    enum class Result { Ours, Pix, Mat, None } result;
};

using Result = Contestant::Result;

template <void (*Operation)(std::uint32_t const*, std::uint32_t*, std::size_t, std::size_t)>
void Morphology(Data& d) {
    Operation(d.a.GetData().data(), d.out.GetData().data(), d.a.GetSize().height, d.a.GetStride());
}

template <void (BitMask::*Operation)(BitMask const&)>
void Combination(Data& d) {
    (d.out.*Operation)(d.b);
}

void Copy(Data& d) { std::memcpy(d.out.GetData().data(), d.a.GetData().data(), 4 * d.a.GetData().size()); }

cv::Mat const Square(3, 3, CV_8UC1, cv::Scalar(1));
cv::Point const Middle(-1, -1);

struct Operation {
    std::string name;
    std::vector<Contestant> contestants;
};

std::vector<Operation> Operations() {
    namespace bit_mask = algorithm::bit_mask;
    return {
        {"Dilate8Way",
         {{"qel", Morphology<bit_mask::Dilate8Way>, Result::Ours},
          {"leptonica", [](Data& d) { pixDilateBrick(d.pixOut.get(), d.pixA.get(), 3, 3); }, Result::Pix},
          {"leptonica-dwa", [](Data& d) { pixDilateBrickDwa(d.pixOut.get(), d.pixA.get(), 3, 3); }, Result::Pix},
          {"opencv", [](Data& d) { cv::dilate(d.matA, d.matOut, Square, Middle, 1, cv::BORDER_CONSTANT, {}); },
           Result::Mat},
          {"memcpy", Copy, Result::None}}},
        {"Erode8Way",
         {{"qel", Morphology<bit_mask::Erode8Way>, Result::Ours},
          {"leptonica", [](Data& d) { pixErodeBrick(d.pixOut.get(), d.pixA.get(), 3, 3); }, Result::Pix},
          {"leptonica-dwa", [](Data& d) { pixErodeBrickDwa(d.pixOut.get(), d.pixA.get(), 3, 3); }, Result::Pix},
          {"opencv", [](Data& d) { cv::erode(d.matA, d.matOut, Square, Middle, 1, cv::BORDER_CONSTANT, {}); },
           Result::Mat},
          {"memcpy", Copy, Result::None}}},
        {"Union",
         {{"qel", Combination<&BitMask::Union>, Result::Ours},
          {"leptonica", [](Data& d) { pixOr(d.pixOut.get(), d.pixOut.get(), d.pixB.get()); }, Result::Pix},
          {"opencv", [](Data& d) { cv::bitwise_or(d.matOut, d.matB, d.matOut); }, Result::Mat},
          {"memcpy", Copy, Result::None}}},
        {"Intersection",
         {{"qel", Combination<&BitMask::Intersection>, Result::Ours},
          {"leptonica", [](Data& d) { pixAnd(d.pixOut.get(), d.pixOut.get(), d.pixB.get()); }, Result::Pix},
          {"opencv", [](Data& d) { cv::bitwise_and(d.matOut, d.matB, d.matOut); }, Result::Mat},
          {"memcpy", Copy, Result::None}}},
        {"Difference",
         {{"qel", Combination<&BitMask::Difference>, Result::Ours},
          {"leptonica", [](Data& d) { pixSubtract(d.pixOut.get(), d.pixOut.get(), d.pixB.get()); }, Result::Pix},
          {"memcpy", Copy, Result::None}}},
    };
}

void Prepare(Size size, NamedMask const& named) {
    auto const data = std::make_shared<Data>();
    BitMask const b = Noise(size, 50, 3);
    data->a = named.mask;
    data->b = b;
    data->pixA = ToPix(named.mask);
    data->pixB = ToPix(b);
    data->matA = ToMat(named.mask);
    data->matB = ToMat(b);
    for (Operation const& operation : Operations()) {
        std::string const name = operation.name + "/" + Name(size) + "/" + named.name;
        data->out = named.mask;
        data->pixOut = ToPix(named.mask);
        data->matOut = ToMat(named.mask);
        for (Contestant const& contestant : operation.contestants) {
            contestant.run(*data);
            // Beyond the rim peers see other things than background.
            if (contestant.result == Result::Pix) Require(Equal(data->out, data->pixOut.get(), 1), name);
            if (contestant.result == Result::Mat) Require(Equal(data->out, data->matOut, 1), name);
            benchmark::RegisterBenchmark((name + "/" + contestant.name).c_str(),
                                         [data, run = contestant.run](benchmark::State& state) {
                                             for (auto _ : state) {
                                                 run(*data);
                                                 benchmark::ClobberMemory();
                                             }
                                         });
        }
    }
}

}  // namespace

void RegisterOperations(Size size) {
    Prepare(size, {"motion", Motion(size, true)});
    Prepare(size, {"noise-50", Noise(size, 50, 1)});
}

}  // namespace qel::benchmarks
