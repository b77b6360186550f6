#pragma once

#include <string>

#include "frame_sink.hpp"
#include "output_file.hpp"

namespace qel::host {

/// Writes the results as JSON, a line a frame, each line as soon as its frame is done.
class JsonLinesSink final : public FrameSink {
public:
    /// path: a file, or "-" for the standard output. source: what the lines call the video.
    JsonLinesSink(std::string const& path, std::string source);

    std::string GetStage() const override { return "write"; }
    void Take(AnalysedFrame const& analysed) override;
    void Finish() override { file_.Close(); }

private:
    OutputFile file_;
    std::string source_;
};

}  // namespace qel::host
