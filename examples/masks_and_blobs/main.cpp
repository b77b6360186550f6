// Masks and blobs: finds the bright things in a picture of one byte a pixel.

#include <cstdint>
#include <cstdio>
#include <vector>

#include <qel/algorithm/bit_mask/dilate.hpp>
#include <qel/algorithm/bit_mask/threshold.hpp>
#include <qel/algorithm/connected_components.hpp>

using namespace qel::algorithm;

int main() {
    // A picture of 320 x 240 pixels with two bars, three columns apart, and a dot.
    BitMask::Size const size{320, 240};
    std::vector<std::uint8_t> pixels(320 * 240, 40);
    for (unsigned int y = 100; y < 150; ++y) {
        for (unsigned int x = 60; x < 120; ++x) pixels[y * 320 + x] = x < 90 || x >= 93 ? 200 : 40;
    }
    pixels[20 * 320 + 300] = 255;

    // One bit a pixel: set where the picture is brighter than 128.
    BitMask mask, grown(size);
    bit_mask::Threshold(pixels.data(), 320, size, 128, mask);

    // Growing twice by a pixel on every side closes the gap between the bars.
    bit_mask::Dilate8Way(mask.GetData().data(), grown.GetData().data(), size.height, mask.GetStride());
    bit_mask::Dilate8Way(grown.GetData().data(), mask.GetData().data(), size.height, mask.GetStride());

    // Connected pixels are blobs; the labeller keeps its buffers, so keep it for the next picture.
    ConnectedComponents labeller;
    std::vector<ConnectedComponents::Blob> blobs;
    labeller.Connect8Way(mask, /*min_area=*/10, blobs);
    for (auto const& blob : blobs) {
        std::printf("blob of %u pixels: columns %u to %u, rows %u to %u\n", blob.area, blob.minX, blob.maxX, blob.minY,
                    blob.maxY);
    }
}
