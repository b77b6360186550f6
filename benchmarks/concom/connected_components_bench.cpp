// Whole-image labelling beside OpenCV (each of its algorithms, with statistics) and Leptonica (boxes).
// Areas are not compared: ours leaves out what merged labels keep.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include "concom/benches.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "support/masks.hpp"
#include "support/peers.hpp"

namespace qel::benchmarks {
namespace {

using algorithm::BitMask;
using algorithm::ConnectedComponents;
using Blobs = std::vector<ConnectedComponents::Blob>;
using Boxes = std::vector<std::array<int, 4>>;

/// One mask in the formats of all contestants.
struct Input {
    BitMask mask;
    PixPtr pix;
    cv::Mat image;
};

struct OpenCvAlgorithm {
    char const* name;
    int type;
};
constexpr OpenCvAlgorithm OpenCvAlgorithms[] = {
    {"opencv-sauf", cv::CCL_WU}, {"opencv-bbdt", cv::CCL_GRANA}, {"opencv-spaghetti", cv::CCL_BOLELLI}};

std::size_t Connect(ConnectedComponents& labeller, BitMask const& mask, int connectivity, Blobs& blobs) {
    return connectivity == 8 ? labeller.Connect8Way(mask, 0, blobs) : labeller.Connect4Way(mask, 0, blobs);
}

Boxes Sorted(Boxes boxes) {
    std::sort(boxes.begin(), boxes.end());
    return boxes;
}

Boxes OurBoxes(Input const& input, int connectivity) {
    ConnectedComponents labeller;
    Blobs blobs;
    Connect(labeller, input.mask, connectivity, blobs);
    Boxes boxes;
    for (auto const& blob : blobs) {
        boxes.push_back({static_cast<int>(blob.minX), static_cast<int>(blob.minY),
                         static_cast<int>(blob.maxX - blob.minX + 1), static_cast<int>(blob.maxY - blob.minY + 1)});
    }
    return Sorted(boxes);
}

Boxes OpenCvBoxes(Input const& input, int connectivity, int type) {
    cv::Mat labels, statistics, centroids;
    int const count =
        cv::connectedComponentsWithStats(input.image, labels, statistics, centroids, connectivity, CV_32S, type);
    Boxes boxes;
    for (int i = 1; i < count; ++i) {
        int const* const row = statistics.ptr<int>(i);
        boxes.push_back({row[cv::CC_STAT_LEFT], row[cv::CC_STAT_TOP], row[cv::CC_STAT_WIDTH], row[cv::CC_STAT_HEIGHT]});
    }
    return Sorted(boxes);
}

Boxes LeptonicaBoxes(Input const& input, int connectivity) {
    Boxa* boxa = pixConnCompBB(input.pix.get(), connectivity);
    Boxes boxes;
    for (int i = 0; i < boxaGetCount(boxa); ++i) {
        std::array<int, 4> box{};
        boxaGetBoxGeometry(boxa, i, &box[0], &box[1], &box[2], &box[3]);
        boxes.push_back(box);
    }
    boxaDestroy(&boxa);
    return Sorted(boxes);
}

void Register(std::string const& name, std::shared_ptr<Input> const& input, int connectivity) {
    auto const add = [&](std::string const& contestant, auto body) {
        benchmark::RegisterBenchmark((name + "/" + contestant).c_str(), body);
    };
    add("qel", [=](benchmark::State& state) {
        // A first call, which takes memory, is a contestant of its own; large masks are timed by very few calls.
        ConnectedComponents labeller;
        Blobs blobs;
        Connect(labeller, input->mask, connectivity, blobs);
        for (auto _ : state) benchmark::DoNotOptimize(Connect(labeller, input->mask, connectivity, blobs));
    });
    add("qel-first-call", [=](benchmark::State& state) {
        for (auto _ : state) {
            ConnectedComponents labeller;
            Blobs blobs;
            benchmark::DoNotOptimize(Connect(labeller, input->mask, connectivity, blobs));
        }
    });
    for (OpenCvAlgorithm const& algorithm : OpenCvAlgorithms) {
        add(algorithm.name, [=](benchmark::State& state) {
            cv::Mat labels, statistics, centroids;
            auto const connect = [&] {
                return cv::connectedComponentsWithStats(input->image, labels, statistics, centroids, connectivity,
                                                        CV_32S, algorithm.type);
            };
            connect();
            for (auto _ : state) benchmark::DoNotOptimize(connect());
        });
    }
    add("leptonica", [=](benchmark::State& state) {
        for (auto _ : state) {
            Boxa* boxa = pixConnCompBB(input->pix.get(), connectivity);
            boxaDestroy(&boxa);
        }
    });
    if (name.ends_with("/empty")) {
        add("read", [=](benchmark::State& state) {
            for (auto _ : state) {
                std::uint32_t any = 0;
                for (std::uint32_t const word : input->mask.GetData()) any |= word;
                benchmark::DoNotOptimize(any);
            }
        });
    }
}

}  // namespace

void RegisterConnectedComponents(Size size) {
    for (NamedMask const& named : Masks(size)) {
        auto const input = std::make_shared<Input>(Input{named.mask, ToPix(named.mask), ToMat(named.mask)});
        for (int const connectivity : {8, 4}) {
            std::string const name = "Connect" + std::to_string(connectivity) + "Way/" + Name(size) + "/" + named.name;
            Boxes const boxes = OurBoxes(*input, connectivity);
            Require(boxes == LeptonicaBoxes(*input, connectivity), name + ": boxes of Leptonica");
            for (OpenCvAlgorithm const& algorithm : OpenCvAlgorithms) {
                Require(boxes == OpenCvBoxes(*input, connectivity, algorithm.type), name + ": boxes of OpenCV");
            }
            Register(name, input, connectivity);
        }
    }
}

}  // namespace qel::benchmarks
