#include "source_failure.hpp"

#include <gst/pbutils/missing-plugins.h>

#include "location.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

/// Whether a missing element would have served a stream that is no video, which nobody misses here.
bool ServesOtherStream(std::string const& detail) {
    for (char const* kind : {"decoder-audio/", "decoder-text/", "decoder-subpicture/", "decoder-application/x-id3"}) {
        if (detail.find(kind) != std::string::npos) return true;
    }
    return false;
}

bool SaysUnknownContent(GstFailure const& failure) {
    return failure.Is(GST_STREAM_ERROR, GST_STREAM_ERROR_TYPE_NOT_FOUND) ||
           failure.Is(GST_STREAM_ERROR, GST_STREAM_ERROR_WRONG_TYPE);
}

}  // namespace

void SourceFailure::Note(GstMessage* message) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        failures_.emplace_back(message);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
        GstFailure warning(message);
        if (IsStream(location_) && warning.domain == GST_RESOURCE_ERROR) disconnections_.push_back(std::move(warning));
    } else if (gst_is_missing_plugin_message(message) != FALSE) {
        GstPtr<gchar> const detail(gst_missing_plugin_message_get_installer_detail(message));
        GstPtr<gchar> const words(gst_missing_plugin_message_get_description(message));
        if (detail && ServesOtherStream(detail.get())) {
            otherStreams_ = true;
        } else if (words) {
            missing_.emplace_back(words.get());
        }
    }
}

bool SourceFailure::MayPass() const {
    if (!missing_.empty() || otherStreams_) return false;
    for (GstFailure const& failure : failures_) {
        if (failure.Is(GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN) || SaysUnknownContent(failure) ||
            failure.Is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED)) {
            return false;
        }
    }
    return true;
}

std::string SourceFailure::DescribeUnopened() const {
    std::string const& name = location_.name;
    if (!missing_.empty()) {
        return "cannot decode '" + name + "': GStreamer lacks the plug-in for " + Join(missing_) +
               "; install it (the base, good, bad, ugly and libav sets hold most)";
    }
    // Raw sound has no decoder whose lack GStreamer could name; it says only that nothing leads to a video.
    bool const nothingLeads = !failures_.empty() && failures_.front().Is(GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN);
    if (otherStreams_ || nothingLeads) return "'" + name + "' holds no video stream";
    if (failures_.empty() && !disconnections_.empty()) {
        return "cannot open '" + name + "': " + disconnections_.front().text;
    }
    if (failures_.empty()) return "cannot read '" + name + "' as a video: nothing in it can be played";
    GstFailure const& failure = failures_.front();
    if (SaysUnknownContent(failure))
        return "'" + name + "' is not a video: its content is of no format known to GStreamer";
    if (failure.domain == GST_RESOURCE_ERROR) return "cannot open '" + name + "': " + failure.text;
    return "cannot read '" + name + "' as a video: " + failure.text;
}

std::string SourceFailure::Describe(std::uint64_t frames, std::uint64_t missingBytes) const {
    if (missingBytes != 0) return DescribeCutShort(location_.name, frames, missingBytes);
    if (frames == 0) return DescribeUnopened();
    auto const& reasons = failures_.empty() ? disconnections_ : failures_;
    std::string const reason = reasons.empty() ? "nothing more can be played" : reasons.front().text;
    if (IsStream(location_)) {
        return "'" + location_.name + "' was lost after frame " + std::to_string(frames - 1) + ": " + reason;
    }
    return "'" + location_.name + "' is damaged after frame " + std::to_string(frames - 1) + ": " + reason;
}

std::string DescribeCutShort(std::string const& name, std::uint64_t frames, std::uint64_t missingBytes) {
    std::string const read = frames == 0   ? "no frame of it can be read"
                             : frames == 1 ? "1 frame was read"
                                           : std::to_string(frames) + " frames were read";
    return "'" + name + "' is cut short: " + std::to_string(missingBytes) + " bytes are missing at its end; " + read;
}

}  // namespace qel::host
