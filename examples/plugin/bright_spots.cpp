// The smallest complete plug-in: finds connected spots that are brighter than a threshold.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/register.hpp"

namespace {

namespace video = qel::algorithm::video;
using qel::algorithm::BitMask;
using qel::algorithm::ConnectedComponents;
using qel::media::ColourFormat;

// The name by which users choose the algorithm, and its identifier in the registry.
constexpr char const* TypeName = "example.BrightSpots";
constexpr qel::hash::MurmurThree32 Id(TypeName);

class BrightSpots final : public video::passthrough::Algorithm {
public:
    // Both formats start with a plane of one brightness byte a pixel, which is all that is looked at.
    BrightSpots() : Algorithm(Id, {ColourFormat::Grey8, ColourFormat::Nv12}) {}

    // Called with what the configuration says, perhaps by another thread than Process.
    void SetThreshold(std::uint8_t threshold) { threshold_ = threshold; }
    void SetSmallestArea(std::uint32_t area) { smallestArea_ = area; }

    void Process(qel::media::video::FrameBase<void const> const& frame, video::Result& result) override {
        if (!frame) return;
        MarkBrightPixels(frame);
        labeller_.Connect8Way(mask_, smallestArea_, spots_);
        for (ConnectedComponents::Blob const& spot : spots_) {
            result.objects.push_back(
                {{spot.minX, spot.minY, spot.maxX + 1, spot.maxY + 1}, spot.area, "bright spot", 1.0F});
        }
        result.foreground = mask_;
    }

private:
    void MarkBrightPixels(qel::media::video::FrameBase<void const> const& frame) {
        auto const& plane = frame.GetPlane(0);
        std::uint8_t const threshold = threshold_;
        mask_.Resize(frame.GetSize());
        for (unsigned int y = 0; y < frame.GetHeight(); ++y) {
            auto const* const row = static_cast<std::uint8_t const*>(plane.GetBuffer()) + y * plane.GetStride();
            std::uint32_t* const words = mask_.GetData().data() + y * mask_.GetStride();
            for (unsigned int x = 0; x < frame.GetWidth(); ++x) {
                if (row[x] > threshold) words[x / 32] |= 0x80000000U >> x % 32;
            }
        }
    }

    std::atomic<std::uint8_t> threshold_ = 160;
    std::atomic<std::uint32_t> smallestArea_ = 4;
    BitMask mask_;
    ConnectedComponents labeller_;
    std::vector<ConnectedComponents::Blob> spots_;
};

std::vector<qel::configuration::Property> const& Properties() {
    using qel::configuration::Range;
    using video::registry::MakeProperty;
    static std::vector<qel::configuration::Property> const properties = {
        MakeProperty<BrightSpots>("threshold", "Brightness from 0 to 255 above which a pixel belongs to a spot",
                                  std::uint8_t{160}, Range{0, 255}, &BrightSpots::SetThreshold),
        MakeProperty<BrightSpots>("smallest_area", "Smallest number of pixels of a spot", std::uint32_t{4},
                                  Range{1, 1000000}, &BrightSpots::SetSmallestArea),
    };
    return properties;
}

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered = video::registry::Register(
    {Id, TypeName, [](qel::inference::backend::Manager&) { return std::make_shared<BrightSpots>(); }, Properties,
     video::registry::CreateNodes(Properties)});

}  // namespace
