#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "qel/geometry/dimension.hpp"

namespace qel::serve {

/// A JPEG of a stream's frame.
struct LivePicture {
    std::vector<std::uint8_t> jpeg{};
    /// Which frame it shows; a later picture has a larger number, also when the stream was started anew.
    std::uint64_t sequence = 0;
    geometry::Dimension<unsigned int, 2> size{};
};

/// Somebody who looks at a stream; while there is one, and no longer, its frames are drawn. Any thread.
class Viewer {
public:
    virtual ~Viewer() = default;
    /// The newest picture, drawn now unless it was drawn before; null before the first frame and when the stream is
    /// gone or switched off. Draws on the calling thread: do not call it on one that must not wait. Throws host::Error
    /// for a frame that no JPEG can be made of.
    virtual std::shared_ptr<LivePicture const> Draw() = 0;
    /// The sequence number that Draw would give; 0 before the first frame.
    virtual std::uint64_t GetSequence() const = 0;
    /// Whether the stream is still there.
    virtual bool IsAlive() const = 0;
};

/// What a picture of a stream is to look like.
struct LookOptions {
    /// With boxes, tags and the grid in metres of a calibrated stream; otherwise the frame as the algorithms leave it.
    bool annotated = true;
    /// The picture is scaled down to this width where it is wider; 0: never.
    unsigned int maxWidth = 0;
    int quality = 80;

    auto operator<=>(LookOptions const&) const = default;
};

}  // namespace qel::serve
