// A video algorithm that changes the frames: darkens everything but the objects that algorithms before it have found.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <qel/algorithm/video/inplace/algorithm.hpp>
#include <qel/algorithm/video/registry/property.hpp>
#include <qel/algorithm/video/registry/register.hpp>

namespace {

namespace video = qel::algorithm::video;
using qel::media::ColourFormat;

// The name by which users choose the algorithm: a dotted one of your own. Its hash is the identifier in the registry.
constexpr char const* TypeName = "example.Spotlight";
constexpr qel::hash::MurmurThree32 Id(TypeName);

class Spotlight final : public video::inplace::Algorithm {
public:
    // Both formats start with a plane of one brightness byte a pixel, which is all that is changed.
    Spotlight() : Algorithm(Id, {ColourFormat::Grey8, ColourFormat::Nv12}) {}

    // Called with what the configuration says: once before the first frame, later perhaps by another thread.
    void SetBrightness(std::uint32_t percent) { brightness_ = percent; }

    void Process(qel::media::video::FrameBase<void>& frame, video::Result& result) override {
        if (!frame) return;
        auto const& plane = frame.GetPlane(0);
        std::uint32_t const brightness = brightness_;  // one value for the whole frame
        for (unsigned int y = 0; y < frame.GetHeight(); ++y) {
            MarkObjects(result, y, frame.GetWidth());
            auto* const row = static_cast<std::uint8_t*>(plane.GetBuffer()) + y * plane.GetStride();
            for (unsigned int x = 0; x < frame.GetWidth(); ++x) {
                if (lit_[x] == 0) row[x] = static_cast<std::uint8_t>(row[x] * brightness / 100);
            }
        }
    }

private:
    // Marks the columns of row y that are part of an object's box.
    void MarkObjects(video::Result const& result, unsigned int y, unsigned int width) {
        lit_.assign(width, 0);
        for (video::Object const& object : result.objects) {
            auto const& box = object.box;  // columns x0 to x1 - 1 and rows y0 to y1 - 1
            if (y < box.y0 || y >= box.y1) continue;
            for (unsigned int x = box.x0; x < std::min(box.x1, width); ++x) lit_[x] = 1;
        }
    }

    std::atomic<std::uint32_t> brightness_ = 25;
    std::vector<std::uint8_t> lit_;  // kept, so that it is allocated once
};

// The settings: name, description, default, range and the function that takes the value.
std::vector<qel::configuration::Property> const& Properties() {
    using qel::configuration::Range;
    static std::vector<qel::configuration::Property> const properties = {
        video::registry::MakeProperty<Spotlight>("brightness", "What is left of the brightness beside objects, percent",
                                                 std::uint32_t{25}, Range{0, 100}, &Spotlight::SetBrightness),
    };
    return properties;
}

// Runs when the plug-in is loaded.
[[maybe_unused]] bool const Registered = video::registry::Register(
    {Id, TypeName, [](qel::inference::backend::Manager&) { return std::make_shared<Spotlight>(); }, Properties,
     video::registry::CreateNodes(Properties)});

}  // namespace
