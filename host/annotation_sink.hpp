#pragma once

#include <functional>
#include <string>
#include <utility>

#include "frame_sink.hpp"
#include "video_writer.hpp"

namespace qel::host {

/// Writes the frames with their objects drawn on them as an MP4 video.
///
/// The video keeps the size of its first frame: those of another size are scaled into it, with black around them.
class AnnotationSink final : public FrameSink {
public:
    /// Draws on a whole frame before the objects are drawn.
    using Backdrop = std::function<void(Picture&)>;

    /// Creates the file. size: of the first frame. frameRate: 0 when not known. backdrop: may be empty.
    AnnotationSink(std::string const& path, Picture::Size size, double frameRate, Backdrop backdrop = {})
        : size_(size), writer_(path, size, frameRate), backdrop_(std::move(backdrop)) {}

    std::string GetStage() const override { return "annotate"; }
    void Take(AnalysedFrame const& analysed) override;
    void Finish() override { writer_.Finish(); }

private:
    Picture::Size size_;
    VideoWriter writer_;
    Backdrop backdrop_;
};

}  // namespace qel::host
