#pragma once

#include <string>
#include <vector>

#include "gstreamer.hpp"
#include "location.hpp"

namespace qel::host {

/// What goes wrong while a video is read, gathered from the messages of its pipeline and told in plain words.
class SourceFailure {
public:
    explicit SourceFailure(Location location) : location_(std::move(location)) {}

    /// Takes note of an error, of a warning about a stream's connection, or of an element that GStreamer lacks; any
    /// other message is passed over.
    void Note(GstMessage* message);

    /// Whether an error was noted.
    explicit operator bool() const noexcept { return !failures_.empty(); }
    /// Whether a stream ended because its connection did; GStreamer only warns of that.
    bool IsDisconnected() const noexcept { return !disconnections_.empty(); }
    /// Forgets the warnings so far: a stream may be reached by a detour, of whose cause GStreamer warned.
    void ForgetDisconnections() noexcept { disconnections_.clear(); }
    /// Whether a stream may be opened again with success: nothing is lacking here, and it is a video.
    bool MayPass() const;

    /// One line. frames: how many were read before; missingBytes: what the file lacks of its announced size.
    std::string Describe(std::uint64_t frames, std::uint64_t missingBytes) const;

private:
    std::string DescribeUnopened() const;

    Location location_;
    std::vector<GstFailure> failures_;
    std::vector<GstFailure> disconnections_;
    std::vector<std::string> missing_;
    bool otherStreams_ = false;
};

/// One line for a file that ends before its headers say it does.
std::string DescribeCutShort(std::string const& name, std::uint64_t frames, std::uint64_t missingBytes);

}  // namespace qel::host
