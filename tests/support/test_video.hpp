#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qel::test {

/// A small video that a test makes for itself.
struct TestVideo {
    unsigned int width = 64;
    unsigned int height = 48;
    unsigned int frames = 10;
    unsigned int framesPerSecond = 10;
    /// GStreamer's format of the frames that are painted: "BGR", "GRAY8" or "I420".
    std::string format = "BGR";
    /// What follows the source: encoder and container. The default keeps every pixel.
    std::string encoder = "matroskamux";
};

/// One frame to be painted: component planes as GStreamer lays them out by default.
struct Canvas {
    unsigned int index;
    std::vector<std::uint8_t*> planes;
    std::vector<std::size_t> strides;
};

/// Writes the video; paint fills each frame, which is black (all zero) before.
void WriteTestVideo(std::string const& path, TestVideo const& video, std::function<void(Canvas&)> const& paint);

/// Fills columns x0 to x1 - 1 and rows y0 to y1 - 1 of a "BGR" canvas.
void FillBgr(Canvas& canvas, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, std::uint8_t blue,
             std::uint8_t green, std::uint8_t red);

/// The same of a canvas with one byte a pixel, or of the first plane of any other.
void FillGrey(Canvas& canvas, unsigned int x0, unsigned int y0, unsigned int x1, unsigned int y1, std::uint8_t level);

/// A grey video on which one bright square of 8 x 8 pixels moves two pixels to the right each frame, from (0, 8) on.
void WriteMovingSquare(std::string const& path, TestVideo video);

}  // namespace qel::test
