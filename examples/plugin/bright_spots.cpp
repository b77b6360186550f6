// A video algorithm that looks at the frames: finds connected spots that are brighter than a threshold.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <qel/algorithm/bit_mask/threshold.hpp>
#include <qel/algorithm/connected_components.hpp>
#include <qel/algorithm/video/passthrough/algorithm.hpp>
#include <qel/algorithm/video/registry/property.hpp>
#include <qel/algorithm/video/registry/register.hpp>

namespace {

namespace video = qel::algorithm::video;
using qel::algorithm::ConnectedComponents;
using qel::media::ColourFormat;

// The name by which users choose the algorithm: a dotted one of your own. Its hash is the identifier in the registry.
constexpr char const* TypeName = "example.BrightSpots";
constexpr qel::hash::MurmurThree32 Id(TypeName);

class BrightSpots final : public video::passthrough::Algorithm {
public:
    // Both formats start with a plane of one brightness byte a pixel, which is all that is looked at.
    BrightSpots() : Algorithm(Id, {ColourFormat::Grey8, ColourFormat::Nv12}) {}

    // Called with what the configuration says: once before the first frame, later perhaps by another thread.
    void SetThreshold(std::uint8_t threshold) { threshold_ = threshold; }
    void SetSmallestArea(std::uint32_t area) { smallestArea_ = area; }

    void Process(qel::media::video::FrameBase<void const> const& frame, video::Result& result) override {
        if (!frame) return;
        auto const& plane = frame.GetPlane(0);
        qel::algorithm::bit_mask::Threshold(static_cast<std::uint8_t const*>(plane.GetBuffer()),
                                            static_cast<std::size_t>(plane.GetStride()), frame.GetSize(), threshold_,
                                            result.foreground);
        labeller_.Connect8Way(result.foreground, smallestArea_, spots_);
        for (ConnectedComponents::Blob const& spot : spots_) {
            // A blob's last column and row are its own, an object's box ends one behind them.
            result.objects.push_back(
                {{spot.minX, spot.minY, spot.maxX + 1, spot.maxY + 1}, spot.area, "bright spot", 1.0F});
        }
    }

private:
    std::atomic<std::uint8_t> threshold_ = 160;
    std::atomic<std::uint32_t> smallestArea_ = 4;
    ConnectedComponents labeller_;  // kept, with the list of spots, so that their buffers are allocated once
    std::vector<ConnectedComponents::Blob> spots_;
};

// The settings: name, description, default, range and the function that takes the value.
std::vector<qel::configuration::Property> const& Properties() {
    using qel::configuration::Range;
    static std::vector<qel::configuration::Property> const properties = {
        video::registry::MakeProperty<BrightSpots>("threshold", "Brightness from 0 to 255 above which a pixel counts",
                                                   std::uint8_t{160}, Range{0, 255}, &BrightSpots::SetThreshold),
        video::registry::MakeProperty<BrightSpots>("smallest_area", "Smallest number of pixels of a spot",
                                                   std::uint32_t{4}, Range{1, 1000000}, &BrightSpots::SetSmallestArea),
    };
    return properties;
}

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered = video::registry::Register(
    {Id, TypeName, [](qel::inference::backend::Manager&) { return std::make_shared<BrightSpots>(); }, Properties,
     video::registry::CreateNodes(Properties)});

}  // namespace
