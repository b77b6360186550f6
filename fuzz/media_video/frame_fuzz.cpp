// Frames of any format and size: allocated with every byte of every plane in place, or refused.
#include <cstdint>
#include <new>
#include <stdexcept>

#include "input.hpp"
#include "qel/media/video/frame.hpp"

namespace {

using qel::fuzz::Check;
using qel::fuzz::Input;
using Frame = qel::media::video::FrameBase<void>;

/// Mostly small, sometimes anything.
unsigned int Extent(Input& input) { return input.Byte() % 4 == 0 ? input.Word() : input.Number(0, 300); }

/// A size that is neither small nor past all memory takes the sanitizer's book-keeping too long.
bool IsTooSlow(std::uint64_t pixels) { return pixels > 1U << 20U && pixels < std::uint64_t{1} << 45U; }

}  // namespace

// No memory is no finding.
extern "C" {
__attribute__((visibility("default"))) char const* __asan_default_options() { return "allocator_may_return_null=1"; }
__attribute__((visibility("default"))) char const* __tsan_default_options() { return "allocator_may_return_null=1"; }
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input input(data, size);
    auto const format = static_cast<qel::media::ColourFormat>(input.Byte());
    unsigned int const width = Extent(input), height = Extent(input);
    if (IsTooSlow(std::uint64_t{width} * height)) return 0;
    try {
        Frame const frame(format, width, height, {}, {});
        Frame const shared(frame);
        for (auto const& plane : frame.GetPlanes()) {
            auto* const bytes = static_cast<unsigned char*>(plane.GetBuffer());
            // First and last byte: the sanitizer knows whether they are ours.
            if (plane.GetSize() != 0) bytes[0] = bytes[plane.GetSize() - 1] = 1;
        }
        Check(frame.GetWidth() == width && frame.GetHeight() == height, "another size");
    } catch (std::invalid_argument const&) {
    } catch (std::bad_alloc const&) {}
    return 0;
}
