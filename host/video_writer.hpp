#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "picture.hpp"

namespace qel::host {

/// Writes pictures as an MP4 file with H.264 video, encoded on other threads.
///
/// The file is made of fragments that play without what follows: a writer that goes without Finish, or a process that
/// is killed, loses the last seconds alone. Memory does not grow with the length of the video.
class VideoWriter {
public:
    /// Creates the file; throws Error when it cannot be written.
    /// size: of every picture; the video gets even sides, which the encoder needs. frameRate: 0 when not known.
    VideoWriter(std::string const& path, Picture::Size size, double frameRate);
    VideoWriter(VideoWriter const&) = delete;
    VideoWriter& operator=(VideoWriter const&) = delete;
    ~VideoWriter();

    /// Adds a picture of the writer's size, shown from the given time of the video on; times must rise.
    /// Waits when the encoder is behind. Throws Error when the file cannot be written.
    void Write(Picture picture, std::chrono::nanoseconds time);

    /// Completes the file; throws Error when it cannot be written.
    void Finish();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qel::host
