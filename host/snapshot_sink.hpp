#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame_sink.hpp"
#include "output_file.hpp"
#include "picture.hpp"

namespace qel::host {

/// Draws a contact sheet: frames spread over the run, with their objects, as one PNG of up to 3 x 3 pictures.
///
/// It need not know how long the run will be: it keeps every n-th frame, small, and doubles n when it has too many.
class SnapshotSink final : public FrameSink {
public:
    explicit SnapshotSink(std::string const& path) : file_(path) {}

    std::string GetStage() const override { return "snapshot"; }
    void Take(AnalysedFrame const& analysed) override;
    void Finish() override;

private:
    struct Thumbnail {
        std::uint64_t index;
        std::string title;
        Picture picture;
    };

    std::vector<Thumbnail const*> Choose() const;

    OutputFile file_;
    std::vector<Thumbnail> kept_;
    std::uint64_t step_ = 1;
};

}  // namespace qel::host
