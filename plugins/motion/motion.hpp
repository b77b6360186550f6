#pragma once

#include <cstdint>
#include <vector>

#include "background_model.hpp"
#include "common/tunable.hpp"
#include "mask_cleaner.hpp"
#include "picture_reader.hpp"
#include "qel/algorithm/bit_mask.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/configuration/property.hpp"

namespace qel::motion {

/// The dotted name by which the algorithm is chosen.
inline constexpr char const* TypeName = "qel.algorithm.video.Motion";
/// What every object is taken for.
inline constexpr char const* Label = "motion";

/// What a person may tune.
struct Settings {
    Parameters model;
    std::uint32_t opening = 1;
    std::uint32_t closing = 0;
    std::uint32_t minimumArea = 400;  ///< pixels
};

/// Finds what moves in front of a fixed camera: one object, labelled "motion", for each connected region of pixels that
/// differ from the learned background. The objects' confidence is the share of their pixels that differ strongly.
///
/// Frames of another size or kind start the model afresh. Settings may be changed by any thread, everything else is for
/// one thread at a time.
class Motion final : public algorithm::video::passthrough::Algorithm, public plugin::Tunable<Settings> {
public:
    Motion();

    /// Forgets the background: the next frame is taken for it.
    void Reset() override;
    void Process(media::video::FrameBase<void const> const& frame, algorithm::video::Result& result) override;

private:
    float Confidence(algorithm::ConnectedComponents::Blob const& blob) const;

    PictureReader reader_;
    BackgroundModel model_;
    MaskCleaner cleaner_;
    algorithm::ConnectedComponents labeller_;
    algorithm::BitMask foreground_;
    algorithm::BitMask strong_;
    std::vector<algorithm::ConnectedComponents::Blob> blobs_;
};

/// The properties of the algorithm: names, what they do, ranges, defaults.
std::vector<configuration::Property> const& Properties();

}  // namespace qel::motion
