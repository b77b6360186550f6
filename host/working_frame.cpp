#include "working_frame.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

namespace qel::host {
namespace {

using Frame = WorkingFrame::Frame;
using Writable = WorkingFrame::Writable;

/// Copies the pixels of a frame into one of the same format and size.
void CopyPixels(Frame const& frame, Writable const& copy) {
    for (std::size_t i = 0; i < Writable::MaxPlanes; ++i) {
        auto const& from = frame.GetPlane(i);
        auto const& to = copy.GetPlane(i);
        if (!from || !to) continue;
        auto const fromStride = static_cast<std::uint64_t>(from.GetStride());
        auto const toStride = static_cast<std::uint64_t>(to.GetStride());
        auto const* in = static_cast<std::uint8_t const*>(from.GetBuffer());
        auto* out = static_cast<std::uint8_t*>(to.GetBuffer());
        // The last row of the source may end with its last pixel.
        std::uint64_t left = from.GetSize();
        for (std::uint64_t row = 0; row < to.GetSize() / toStride; ++row) {
            std::memcpy(out, in, std::min({toStride, fromStride, left}));
            in += fromStride;
            out += toStride;
            left -= std::min(left, fromStride);
        }
    }
}

}  // namespace

/// The pixels of a copy, and how many of the frames made of them are held.
struct WorkingFrame::Pixels {
    explicit Pixels(Writable memory) : frame(std::move(memory)) {}

    bool Fit(Frame const& other) const {
        return frame.GetColourFormat() == other.GetColourFormat() && frame.GetSize() == other.GetSize();
    }
    bool IsHeld() const noexcept { return holders.load(std::memory_order_acquire) != 0; }

    /// A frame that shares the pixels.
    template <class T>
    static media::video::FrameBase<T> Share(std::shared_ptr<Pixels> const& pixels) {
        typename media::video::FrameBase<T>::Planes planes{};
        for (std::size_t i = 0; i < planes.size(); ++i) {
            auto const& plane = pixels->frame.GetPlane(i);
            planes[i] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
        }
        return {planes,
                pixels->frame.GetColourFormat(),
                pixels->frame.GetSize(),
                pixels->timestamp,
                pixels->rotation,
                [pixels] { pixels->holders.fetch_add(1, std::memory_order_relaxed); },
                [pixels] { pixels->holders.fetch_sub(1, std::memory_order_release); }};
    }

    Writable frame;
    media::TimePoint timestamp{};
    media::video::frame::Rotation rotation{};
    std::atomic<std::uint64_t> holders{0};
};

void WorkingFrame::Start(Frame frame) {
    original_ = std::move(frame);
    isOwn_ = false;
}

Frame WorkingFrame::Get() const { return isOwn_ ? Pixels::Share<void const>(own_) : original_; }

Writable WorkingFrame::Change() {
    if (!isOwn_) {
        CopyFrom(original_);
        original_ = {};
        isOwn_ = true;
    } else if (own_->IsHeld()) {
        CopyFrom(Get());
    }
    return Pixels::Share<void>(own_);
}

void WorkingFrame::CopyFrom(Frame const& frame) {
    auto pixels = own_;
    if (!pixels || pixels->IsHeld() || !pixels->Fit(frame)) {
        pixels = std::make_shared<Pixels>(Writable(frame.GetColourFormat(), frame.GetSize(), {}, {}));
    }
    CopyPixels(frame, pixels->frame);
    pixels->timestamp = frame.GetTimestamp();
    pixels->rotation = frame.GetRotation();
    own_ = std::move(pixels);
    ++copies_;
}

Writable CopyFrame(Frame const& frame) {
    Writable copy(frame.GetColourFormat(), frame.GetSize(), frame.GetTimestamp(), frame.GetRotation());
    CopyPixels(frame, copy);
    return copy;
}

Frame MakeReadOnly(Writable const& frame) {
    Frame::Planes planes{};
    for (std::size_t i = 0; i < planes.size(); ++i) {
        auto const& plane = frame.GetPlane(i);
        planes[i] = {plane.GetSize(), plane.GetBuffer(), plane.GetStride()};
    }
    return {planes,         frame.GetColourFormat(), frame.GetSize(), frame.GetTimestamp(), frame.GetRotation(),
            frame.GetRef(), frame.GetUnref()};
}

WorkingFrame::Frame WithTimestamp(WorkingFrame::Frame const& frame, media::TimePoint time) {
    return {frame.GetPlanes(),   frame.GetColourFormat(), frame.GetSize(), time,
            frame.GetRotation(), frame.GetRef(),          frame.GetUnref()};
}

}  // namespace qel::host
