#pragma once

#include <optional>
#include <string>

#include "frame_sink.hpp"
#include "video_writer.hpp"

namespace qel::host {

/// Writes the frames with their objects drawn on them as an MP4 video.
///
/// Frames of another size than the first are scaled to the first one's.
class AnnotationSink final : public FrameSink {
public:
    /// Creates the file. size: of the first frame. frameRate: 0 when not known.
    AnnotationSink(std::string const& path, Picture::Size size, double frameRate)
        : size_(size), writer_(path, size, frameRate) {}

    std::string GetStage() const override { return "annotate"; }
    void Take(AnalysedFrame const& analysed) override;
    void Finish() override { writer_.Finish(); }

private:
    Picture::Size size_;
    VideoWriter writer_;
};

}  // namespace qel::host
