#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/media/colour_format.hpp"
#include "qel/media/video/frame.hpp"
#include "qel/type/binding.hpp"
#include "runtime.hpp"
#include "setting.hpp"
#include "working_frame.hpp"

namespace qel::host {

/// An algorithm of the registry and the nodes that it is to follow.
struct ChainLink {
    hash::MurmurThree32 id;
    /// As Runtime::MakeConfiguration or MakeOwnConfiguration makes it; not null.
    std::shared_ptr<configuration::node::Map> map;
};

/// An algorithm of the registry that follows its configuration in the tree of a runtime, which outlives it.
class ConfiguredAlgorithm {
public:
    using Frame = media::video::FrameBase<void const>;

    /// Makes the algorithm and its configuration. Throws Error when that cannot be done.
    ConfiguredAlgorithm(Runtime& runtime, hash::MurmurThree32 id);
    /// The same, and starts it.
    ConfiguredAlgorithm(Runtime& runtime, hash::MurmurThree32 id, std::vector<Setting> const& settings);

    /// Makes the algorithm and starts it with a configuration that is there already, its own or the runtime's; may be
    /// done on several threads of one runtime. Throws Error when it cannot be made, UsageError when it refuses the
    /// configuration.
    ConfiguredAlgorithm(Runtime& runtime, ChainLink link);

    /// Applies the settings to the configuration and binds the algorithm to it. Throws UsageError for a wrong setting.
    void Start(std::vector<Setting> const& settings);

    /// The last part of the algorithm's type name.
    std::string const& GetName() const noexcept { return name_; }
    /// The nodes of the algorithm's properties; a change takes effect on the next frame.
    configuration::node::Map& GetConfiguration() noexcept { return *map_; }
    std::shared_ptr<algorithm::video::Algorithm> GetAlgorithm() const noexcept { return algorithm_; }
    std::vector<media::ColourFormat> const& GetColourFormats() const { return algorithm_->GetSupportedColourFormats(); }

    /// Has the algorithm look at a frame and add to the result; returns the frame as the algorithm leaves it: itself,
    /// or a copy where the algorithm works on the pixels. Throws Error with what the algorithm throws.
    Frame Process(Frame const& frame, algorithm::video::Result& result);
    /// The same with a frame that is copied only where others hold its pixels.
    void Process(WorkingFrame& frame, algorithm::video::Result& result);

    /// Has the algorithm forget what it has seen. Throws Error with what the algorithm throws.
    void Reset();

private:
    void Make(Runtime& runtime, hash::MurmurThree32 id);
    void Bind();

    std::shared_ptr<configuration::node::Map> map_;
    std::string name_;
    std::shared_ptr<algorithm::video::Algorithm> algorithm_;
    // The last member: what follows the configuration lets go before the algorithm does.
    std::vector<type::Binding> bindings_;
};

}  // namespace qel::host
