// Video algorithms with results that a test can foretell: "test.Threshold" finds the connected pixels of at least a
// brightness, "test.Invert" turns every pixel into its complement, "test.Fail" fails on the third frame
// since its start or reset.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/register.hpp"

namespace {

namespace video = qel::algorithm::video;
namespace registry = video::registry;
using qel::algorithm::ConnectedComponents;
using qel::configuration::Property;
using qel::configuration::Range;
using qel::inference::backend::Manager;
using qel::media::ColourFormat;

constexpr char const* ThresholdName = "test.Threshold";
constexpr char const* InvertName = "test.Invert";
constexpr char const* FailName = "test.Fail";

class Threshold final : public video::passthrough::Algorithm {
public:
    Threshold() : Algorithm(qel::hash::MurmurThree32(ThresholdName), {ColourFormat::Grey8, ColourFormat::Nv12}) {}

    void SetThreshold(std::uint8_t threshold) { threshold_ = threshold; }
    void SetSmallestArea(std::uint32_t area) { smallestArea_ = area; }
    void SetConfidence(double confidence) { confidence_ = confidence; }
    void SetEnabled(bool enabled) { enabled_ = enabled; }
    void SetLabel(std::string label) {
        std::lock_guard<std::mutex> const lock(mutex_);
        label_ = std::move(label);
    }

    void Process(qel::media::video::FrameBase<void const> const& frame, video::Result& result) override {
        if (!enabled_) return;
        auto const& plane = frame.GetPlane(0);
        qel::algorithm::BitMask mask(frame.GetSize());
        for (unsigned int y = 0; y < frame.GetHeight(); ++y) {
            auto const* const row = static_cast<std::uint8_t const*>(plane.GetBuffer()) + y * plane.GetStride();
            std::uint32_t* const words = mask.GetData().data() + y * mask.GetStride();
            for (unsigned int x = 0; x < frame.GetWidth(); ++x) {
                if (row[x] >= threshold_) words[x / 32] |= 0x80000000U >> x % 32;
            }
        }
        labeller_.Connect8Way(mask, smallestArea_, blobs_);
        std::lock_guard<std::mutex> const lock(mutex_);
        for (ConnectedComponents::Blob const& blob : blobs_) {
            result.objects.push_back({{blob.minX, blob.minY, blob.maxX + 1, blob.maxY + 1},
                                      blob.area,
                                      label_,
                                      static_cast<float>(confidence_)});
        }
        result.foreground = std::move(mask);
    }

private:
    std::atomic<std::uint8_t> threshold_ = 0;
    std::atomic<std::uint32_t> smallestArea_ = 0;
    std::atomic<double> confidence_ = 0;
    std::atomic<bool> enabled_ = false;
    std::mutex mutex_;
    std::string label_;
    ConnectedComponents labeller_;
    std::vector<ConnectedComponents::Blob> blobs_;
};

class Invert final : public video::inplace::Algorithm {
public:
    Invert() : Algorithm(qel::hash::MurmurThree32(InvertName), {ColourFormat::Grey8}) {}

    void Process(qel::media::video::FrameBase<void>& frame, video::Result&) override {
        auto const& plane = frame.GetPlane(0);
        auto* const bytes = static_cast<std::uint8_t*>(plane.GetBuffer());
        for (std::size_t i = 0; i < plane.GetSize(); ++i) bytes[i] = static_cast<std::uint8_t>(~bytes[i]);
    }
};

class Fail final : public video::passthrough::Algorithm {
public:
    Fail() : Algorithm(qel::hash::MurmurThree32(FailName), {ColourFormat::Rgb24}) {}

    void Process(qel::media::video::FrameBase<void const> const&, video::Result&) override {
        if (++frames_ == 3) throw std::runtime_error("three is too many");
    }

    void Reset() override { frames_ = 0; }

private:
    int frames_ = 0;
};

std::vector<Property> const& ThresholdProperties() {
    static std::vector<Property> const properties = {
        registry::MakeProperty<Threshold>("threshold", "Smallest brightness of a pixel that counts", std::uint8_t{200},
                                          Range{1, 250}, &Threshold::SetThreshold),
        registry::MakeProperty<Threshold>("smallest_area", "Fewest pixels of an object", std::uint32_t{1},
                                          Range{1, 1000}, &Threshold::SetSmallestArea),
        registry::MakeProperty<Threshold>("confidence", "Confidence that objects get", 0.5, Range{0.0, 1.0},
                                          &Threshold::SetConfidence),
        registry::MakeProperty<Threshold>("enabled", "Whether objects are looked for", true, &Threshold::SetEnabled),
        registry::MakeProperty<Threshold>("label", "Label that objects get", std::string("bright"),
                                          std::set<std::string>{"bright", "moving", "other"}, &Threshold::SetLabel),
    };
    return properties;
}

template <class Algorithm>
std::shared_ptr<video::Algorithm> Make(Manager&) {
    return std::make_shared<Algorithm>();
}

bool Register(char const* name, registry::Info::Make make, registry::Info::Properties properties) {
    auto nodes = properties ? registry::CreateNodes(properties) : registry::Info::CreateNodes();
    return registry::Register(
        {qel::hash::MurmurThree32(name), name, std::move(make), std::move(properties), std::move(nodes)});
}

[[maybe_unused]] bool const Registered = Register(ThresholdName, Make<Threshold>, ThresholdProperties) &&
                                         Register(InvertName, Make<Invert>, {}) && Register(FailName, Make<Fail>, {});

}  // namespace
