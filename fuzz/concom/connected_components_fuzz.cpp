// Labelling by every set of loops and in every manner against labelling pixel by pixel; the labellers are kept from
// input to input.
#include <cstdint>
#include <vector>

#include "concom/labeller.hpp"
#include "input.hpp"
#include "reference/connected_components.hpp"

namespace {

using namespace qel;
using algorithm::concom::Labeller;

std::vector<Labeller> MakeLabellers() {
    std::vector<Labeller> labellers;
    for (auto const& kernels : algorithm::concom::GetSupportedKernels()) {
        for (auto const manner : {Labeller::Manner::Runs, Labeller::Manner::Bulk, Labeller::Manner::Adaptive}) {
            labellers.emplace_back(kernels, manner);
        }
    }
    return labellers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static std::vector<Labeller> labellers = MakeLabellers();
    static std::vector<algorithm::ConnectedComponents::Blob> blobs;
    fuzz::Input input(data, size);
    unsigned int const min_area = input.Byte() % 32;
    algorithm::BitMask const mask = input.Mask(input.Size(260, 48));
    auto const expected8Way = reference::PixelLabeller().Connect8Way(mask, min_area);
    auto const expected4Way = reference::PixelLabeller().Connect4Way(mask, min_area);
    for (Labeller& labeller : labellers) {
        std::size_t count = labeller.Connect(mask, true, min_area, blobs);
        fuzz::Check(count == blobs.size(), "number of blobs, 8-way");
        fuzz::Check(blobs == expected8Way, "Connect8Way");
        count = labeller.Connect(mask, false, min_area, blobs);
        fuzz::Check(count == blobs.size(), "number of blobs, 4-way");
        fuzz::Check(blobs == expected4Way, "Connect4Way");
    }
    return 0;
}
