#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "colour.hpp"
#include "colour_table.hpp"
#include "common/tunable.hpp"
#include "object_pixels.hpp"
#include "picture.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/property.hpp"

namespace qel::colour_classifier {

/// The dotted name by which the algorithm is chosen.
inline constexpr char const* TypeName = "qel.algorithm.video.ColourClassifier";

/// What a person may tune.
struct Settings {
    std::uint32_t mostColours = 3;
    double smallestShare = 0.12;
    double smallestShadeShare = 0.2;
    std::uint32_t rim = 1;  ///< pixels
    double neutralChroma = 0.04;
    double exposure = 0;  ///< in stops
};

/// Names the colours of every object that the run has found so far, measured on the object's own pixels: the attribute
/// "colours" holds the names, the largest share first, and "colour_shares" their shares of the pixels, 0 to 1. An
/// object without pixels gets neither.
///
/// Settings may be changed by any thread, everything else is for one thread at a time.
class ColourClassifier final : public algorithm::video::passthrough::Algorithm, public plugin::Tunable<Settings> {
public:
    ColourClassifier();

    /// Throws std::invalid_argument, with the result unchanged, for a frame that cannot be read, a foreground of
    /// another size than the frame's, and an object whose box reaches beyond the frame.
    void Process(media::video::FrameBase<void const> const& frame, algorithm::video::Result& result) override;

private:
    using Counts = std::array<std::size_t, ColourCount>;

    Counts CountColours(Picture const& picture, ObjectPixels::Box const& box) const;
    template <media::ColourFormat Format>
    Counts CountColoursOf(Picture const& picture, ObjectPixels::Box const& box) const;

    ColourTable table_;
    ObjectPixels pixels_;
};

/// The properties of the algorithm: names, what they do, ranges, defaults.
std::vector<configuration::Property> const& Properties();

}  // namespace qel::colour_classifier
