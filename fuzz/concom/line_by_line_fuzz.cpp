// Labelling row by row against walking pixels and searching lists.
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/line_by_line_connected_components.hpp"
#include "reference/line_by_line.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel;
    fuzz::Input input(data, size);
    algorithm::BitMask const mask = input.Mask(input.Size(200, 40));
    unsigned int const width = mask.GetSize().width;
    algorithm::LineByLineConnectedComponents labeller(width);
    reference::LineLabeller model(width);
    std::vector<std::uint32_t> const empty(mask.GetStride());
    std::vector<algorithm::concom::BlobStats> finished;
    for (std::size_t y = 0; y <= mask.GetSize().height; ++y) {
        bool const flush = y == mask.GetSize().height;
        std::uint32_t const* const row = flush ? empty.data() : mask.GetData().data() + y * mask.GetStride();
        labeller.LineByLine8Way(row, finished);
        fuzz::Check(finished == model.LineByLine8Way(row), "LineByLine8Way");
    }
    return 0;
}
