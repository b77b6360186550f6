// Frames around foreign memory: pixels that a camera driver owns are wrapped, not copied, and given back when the last
// frame that shares them is gone.

#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

#include <qel/media/video/frame.hpp>

using Frame = qel::media::video::FrameBase<void const>;  // pixels that may be read; <void> may also be written
using Plane = qel::media::video::frame::PlaneBase<void const>;

// A buffer as drivers have them: rows are padded to 64 bytes, and a counter tells whether it is in use.
class CaptureBuffer {
public:
    CaptureBuffer() : bytes_(Pitch * Height, 7) {}

    // Both callbacks may be called on any thread that holds a frame; a driver that expects that counts atomically.
    void Ref() { std::printf("  in use by %d\n", ++users_); }
    void Unref() {
        std::printf("  in use by %d\n", --users_);
        if (users_ == 0) std::printf("  back to the driver\n");
    }

    Frame Wrap(qel::media::TimePoint timestamp) {
        Frame::Planes planes;  // the format says how many of the four are used
        planes[0] = Plane(bytes_.size(), bytes_.data(), Pitch);
        return {planes,
                qel::media::ColourFormat::Grey8,
                Width,
                Height,
                timestamp,
                {},
                [this] { Ref(); },
                [this] { Unref(); }};
    }

private:
    static constexpr unsigned int Width = 50, Height = 4, Pitch = 64;

    std::vector<std::uint8_t> bytes_;
    int users_ = 0;
};

int main() {
    CaptureBuffer buffer;

    std::printf("wrap\n");
    Frame frame = buffer.Wrap({});

    std::printf("copy: shares the pixels\n");
    Frame copy = frame;
    std::printf("  the same memory: %s\n",
                copy.GetPlane(0).GetBuffer() == frame.GetPlane(0).GetBuffer() ? "yes" : "no");

    std::printf("move: hands its share on\n");
    Frame const moved = std::move(frame);

    // Pixel (x, y): rows are GetStride() bytes apart, not GetWidth().
    auto const& plane = moved.GetPlane(0);
    auto const* const row = static_cast<std::uint8_t const*>(plane.GetBuffer()) + 3 * plane.GetStride();
    std::printf("  %u x %u pixels, rows %ld bytes apart, pixel (49, 3) is %d\n", moved.GetWidth(), moved.GetHeight(),
                static_cast<long>(plane.GetStride()), row[49]);

    std::printf("let the copy go\n");
    copy = Frame();

    std::printf("leave: the last frame goes\n");
}
