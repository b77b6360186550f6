#include "configured_algorithm.hpp"

#include <algorithm>
#include <cstring>
#include <exception>

#include "catalogue.hpp"
#include "error.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/get.hpp"

namespace qel::host {
namespace {

namespace video = algorithm::video;
namespace node = configuration::node;

using Writable = media::video::FrameBase<void>;

}  // namespace

ConfiguredAlgorithm::ConfiguredAlgorithm(hash::MurmurThree32 id, std::vector<Setting> const& settings)
    : root_(node::Map::Make("")) {
    try {
        Make(id);
    } catch (std::exception const& error) {
        throw Error("cannot make the algorithm '" + name_ + "': " + error.what());
    }
    Apply(settings, *map_, "'" + name_ + "'");
    try {
        // Takes the registry's lock itself, so it must not be held here.
        bindings_ = algorithm_->BindToConfiguration(*map_);
    } catch (std::exception const& error) {
        throw UsageError("the algorithm '" + name_ + "' refuses its configuration: " + error.what());
    }
}

void ConfiguredAlgorithm::Make(hash::MurmurThree32 id) {
    auto const registry = video::registry::Get().GetMap();
    video::registry::Info const& info = registry->at(id);
    name_ = GetShortName(info.GetTypeName());
    map_ = node::Map::Make(name_, std::string("Properties of ") + info.GetTypeName());
    root_->Insert(map_);
    info.CreateConfigNodes(manager_, map_);
    algorithm_ = info.GetMake()(manager_);
    if (!algorithm_) throw Error("its factory gives nothing");
    algorithm_->SetOfflineModeEnabled(true);
}

ConfiguredAlgorithm::Frame ConfiguredAlgorithm::Process(Frame const& frame, video::Result& result) {
    try {
        // The kind is what the algorithm was made as; the class tells how to call it.
        if (auto* const reader = dynamic_cast<video::passthrough::Algorithm*>(algorithm_.get())) {
            reader->Process(frame, result);
            return frame;
        }
        if (auto* const writer = dynamic_cast<video::inplace::Algorithm*>(algorithm_.get())) {
            Writable copy = CopyFrame(frame);
            writer->Process(copy, result);
            return MakeReadOnly(copy);
        }
    } catch (std::exception const& error) {
        throw Error("the algorithm '" + name_ + "' failed: " + error.what());
    }
    throw Error("the algorithm '" + name_ + "' is of a kind that cannot be run");
}

Writable CopyFrame(media::video::FrameBase<void const> const& frame) {
    Writable copy(frame.GetColourFormat(), frame.GetSize(), frame.GetTimestamp(), frame.GetRotation());
    for (std::size_t i = 0; i < Writable::MaxPlanes; ++i) {
        auto const& from = frame.GetPlane(i);
        auto const& to = copy.GetPlane(i);
        if (!from || !to) continue;
        auto const fromStride = static_cast<std::uint64_t>(from.GetStride());
        auto const toStride = static_cast<std::uint64_t>(to.GetStride());
        auto const* in = static_cast<std::uint8_t const*>(from.GetBuffer());
        auto* out = static_cast<std::uint8_t*>(to.GetBuffer());
        // The last row of the source may end with its last pixel.
        std::uint64_t left = from.GetSize();
        for (std::uint64_t row = 0; row < to.GetSize() / toStride; ++row) {
            std::memcpy(out, in, std::min({toStride, fromStride, left}));
            in += fromStride;
            out += toStride;
            left -= std::min(left, fromStride);
        }
    }
    return copy;
}

media::video::FrameBase<void const> MakeReadOnly(Writable const& frame) {
    media::video::FrameBase<void const>::Planes planes{};
    for (std::size_t i = 0; i < planes.size(); ++i) {
        auto const& plane = frame.GetPlane(i);
        planes[i] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
    }
    return {planes,         frame.GetColourFormat(), frame.GetSize(), frame.GetTimestamp(), frame.GetRotation(),
            frame.GetRef(), frame.GetUnref()};
}

}  // namespace qel::host
