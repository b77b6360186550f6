// Labelling row by row beside our whole-image labeller and the step-by-step model of the tests; no peer does it.
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "concom/benches.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "qel/algorithm/line_by_line_connected_components.hpp"
#include "reference/line_by_line.hpp"
#include "support/masks.hpp"

namespace qel::benchmarks {

void RegisterLineByLine(Size size) {
    using namespace algorithm;
    for (NamedMask const& named : Masks(size)) {
        std::string const name = "LineByLine8Way/" + Name(size) + "/" + named.name;
        auto const mask = std::make_shared<BitMask>(named.mask);
        benchmark::RegisterBenchmark((name + "/qel").c_str(), [=](benchmark::State& state) {
            LineByLineConnectedComponents labeller(size.width);
            std::vector<concom::BlobStats> finished;
            std::vector<std::uint32_t> const empty(mask->GetStride());
            for (auto _ : state) {
                std::uint32_t const* row = mask->GetData().data();
                for (unsigned int y = 0; y < size.height; ++y, row += mask->GetStride()) {
                    labeller.LineByLine8Way(row, finished);
                }
                labeller.LineByLine8Way(empty.data(), finished);
            }
        });
        benchmark::RegisterBenchmark((name + "/whole-image").c_str(), [=](benchmark::State& state) {
            ConnectedComponents labeller;
            std::vector<ConnectedComponents::Blob> blobs;
            for (auto _ : state) benchmark::DoNotOptimize(labeller.Connect8Way(*mask, 0, blobs));
        });
        // Elsewhere it takes too long: it searches lists.
        if (!named.name.starts_with("demo-")) continue;
        benchmark::RegisterBenchmark((name + "/reference").c_str(), [=](benchmark::State& state) {
            reference::LineLabeller labeller(size.width);
            std::vector<std::uint32_t> const empty(mask->GetStride());
            for (auto _ : state) {
                std::uint32_t const* row = mask->GetData().data();
                for (unsigned int y = 0; y < size.height; ++y, row += mask->GetStride()) {
                    benchmark::DoNotOptimize(labeller.LineByLine8Way(row));
                }
                benchmark::DoNotOptimize(labeller.LineByLine8Way(empty.data()));
            }
        });
    }
}

}  // namespace qel::benchmarks
