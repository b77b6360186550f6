#include "open_stream.hpp"

#include "location.hpp"
#include "looped_source.hpp"
#include "open_source.hpp"

namespace qel::serve {

std::unique_ptr<host::FrameSource> OpenStream(StreamSpec const& spec, std::vector<media::ColourFormat> const& formats,
                                              std::function<bool()> const& stop,
                                              host::ReconnectingSource::Say const& say) {
    host::Location const location = host::Locate(spec.source);
    host::StreamPolicy policy;
    if (host::IsStream(location)) policy.reconnect.emplace();
    if (!location.file || !spec.loop) return host::OpenSource(location, formats, policy, stop, say);
    auto const open = [=] { return host::OpenSource(location, formats, policy, stop, say); };
    return std::make_unique<LoopedSource>(open, stop);
}

}  // namespace qel::serve
