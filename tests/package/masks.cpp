// Uses the library as its users do: draws on a mask, finds what is connected, prints it.

#include <cstdio>
#include <vector>

#include <qel/algorithm/bit_mask.hpp>
#include <qel/algorithm/bit_mask/dilate.hpp>
#include <qel/algorithm/bit_mask/fill_rectangle.hpp>
#include <qel/algorithm/connected_components.hpp>

int main() {
    using namespace qel::algorithm;
    BitMask mask({64, 48}), grown({64, 48});
    bit_mask::FillRectangle(mask, {4, 4, 8, 8}, 1);
    bit_mask::FillRectangle(mask, {9, 4, 12, 8}, 1);
    bit_mask::FillRectangle(mask, {40, 20, 50, 30}, 1);
    bit_mask::Dilate8Way(mask.GetData().data(), grown.GetData().data(), 48, grown.GetStride());
    ConnectedComponents labeller;
    std::vector<ConnectedComponents::Blob> blobs;
    labeller.Connect8Way(grown, 1, blobs);
    for (auto const& blob : blobs) std::printf("%u,%u to %u,%u\n", blob.minX, blob.minY, blob.maxX, blob.maxY);
}
