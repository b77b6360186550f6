#include "open_source.hpp"

#include "video_source.hpp"

namespace qel::host {

std::unique_ptr<FrameSource> OpenSource(Location const& location, std::vector<media::ColourFormat> const& formats,
                                        StreamPolicy const& policy, std::function<bool()> const& stop,
                                        ReconnectingSource::Say const& say) {
    auto const open = [=, silence = policy.silence] {
        return std::make_unique<VideoSource>(location, formats, stop, silence);
    };
    if (!policy.reconnect) return open();
    return std::make_unique<ReconnectingSource>(location.name, open, *policy.reconnect, stop, say);
}

}  // namespace qel::host
