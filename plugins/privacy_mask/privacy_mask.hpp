#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "common/tunable.hpp"
#include "mask_runs.hpp"
#include "moving_mask.hpp"
#include "painter.hpp"
#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/video/inplace/algorithm.hpp"
#include "qel/configuration/property.hpp"
#include "zone.hpp"
#include "zone_mask.hpp"

namespace qel::privacy_mask {

/// The dotted name by which the algorithm is chosen.
inline constexpr char const* TypeName = "qel.algorithm.video.PrivacyMask";

/// How pixels are hidden.
enum class Mode {
    Pixelate,  ///< each pixel becomes the mean of its block
    Blank,     ///< black
};

/// What a person may tune.
struct Settings {
    std::shared_ptr<Zones const> zones = std::make_shared<Zones const>();
    Mode mode = Mode::Pixelate;
    std::uint32_t blockSize = 16;  ///< pixels; an odd one counts as the next even one
    MovingPart movingPart = MovingPart::None;
    std::uint32_t movingMargin = 8;  ///< pixels
};

/// Hides zones of the picture, and if wanted what moves: every pixel that a zone touches is pixelated or blanked, the
/// chroma of Nv12 wherever one of its four pixels is.
///
/// Settings may be changed by any thread, everything else is for one thread at a time.
class PrivacyMask final : public algorithm::video::inplace::Algorithm, public plugin::Tunable<Settings> {
public:
    PrivacyMask();

    /// Throws std::invalid_argument, with nothing changed, for a frame that cannot be masked, and when what moves is to
    /// be masked by its shapes but the result has none. The frame must not be shown then.
    void Process(media::video::FrameBase<void>& frame, algorithm::video::Result& result) override;

private:
    /// What is hidden in a frame.
    struct Hidden {
        std::vector<PixelRun> pixels;
        std::vector<PixelRun> chroma;
    };

    Hidden const& FindHidden(Settings const& settings, algorithm::BitMask::Size size,
                             algorithm::video::Result const& result);
    void FindRunsOf(algorithm::BitMask const& mask, Hidden& hidden);

    ZoneMask zoneMask_;
    MovingMask movingMask_;
    algorithm::BitMask mask_;  // zones and what moves
    algorithm::BitMask half_;
    Hidden hiddenByZones_;
    Hidden hidden_;
    Painter painter_;
};

/// The properties of the algorithm: names, what they do, ranges, defaults.
std::vector<configuration::Property> const& Properties();

}  // namespace qel::privacy_mask
