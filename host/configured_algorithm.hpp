#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/inference/backend/manager.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"
#include "qel/type/binding.hpp"
#include "setting.hpp"

namespace qel::host {

/// An algorithm of the registry that follows a configuration of its own.
class ConfiguredAlgorithm {
public:
    using Frame = media::video::FrameBase<void const>;

    /// Makes the configuration, applies the settings to it, makes the algorithm and binds the two.
    /// Throws UsageError for a wrong setting, Error when the algorithm cannot be made.
    ConfiguredAlgorithm(hash::MurmurThree32 id, std::vector<Setting> const& settings);

    /// The nodes of the algorithm's properties; a change takes effect on the next frame.
    configuration::node::Map& GetConfiguration() noexcept { return *map_; }
    std::vector<media::ColourFormat> const& GetColourFormats() const { return algorithm_->GetSupportedColourFormats(); }

    /// Has the algorithm look at a frame and add to the result; returns the frame as the algorithm leaves it: itself,
    /// or a copy where the algorithm works on the pixels. Throws Error with what the algorithm throws.
    Frame Process(Frame const& frame, algorithm::video::Result& result);

private:
    void Make(hash::MurmurThree32 id);

    inference::backend::Manager manager_;
    std::shared_ptr<configuration::node::Map> root_;
    std::shared_ptr<configuration::node::Map> map_;
    std::string name_;
    std::shared_ptr<algorithm::video::Algorithm> algorithm_;
    // The last member: what follows the configuration lets go before the algorithm does.
    std::vector<type::Binding> bindings_;
};

/// A frame with pixels of its own, which may be written.
media::video::FrameBase<void> CopyFrame(media::video::FrameBase<void const> const& frame);

/// The same frame, to be read only; shares the pixels.
media::video::FrameBase<void const> MakeReadOnly(media::video::FrameBase<void> const& frame);

}  // namespace qel::host
