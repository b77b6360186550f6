#pragma once

#include <memory>

#include "qel/algorithm/bit_mask.hpp"
#include "zone.hpp"

namespace qel::privacy_mask {

/// The pixels of a frame that zones hide; drawn anew only when the zones or the frame's size change.
class ZoneMask {
public:
    /// How far beyond its outline a zone reaches, in pixels, so that no rounding uncovers anything.
    static constexpr double Margin = 0.25;

    /// Returns whether the mask was drawn anew. Zones that are the same object are taken for unchanged.
    bool Update(std::shared_ptr<Zones const> const& zones, algorithm::BitMask::Size size);

    /// Every pixel whose square, made larger by the margin, touches a zone; padding bits are clear.
    algorithm::BitMask const& Get() const noexcept { return mask_; }

private:
    std::shared_ptr<Zones const> zones_;
    algorithm::BitMask mask_;
};

}  // namespace qel::privacy_mask
