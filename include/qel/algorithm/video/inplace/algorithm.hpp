#pragma once

#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/video/algorithm.hpp"
#include "qel/algorithm/video/result.hpp"
#include "qel/media/video/frame.hpp"

namespace qel::algorithm::video::inplace {

/// A video algorithm that works on a frame which it may change, such as one that blanks a zone.
///
/// Objects compare as their bases do. One thread at a time.
class QEL_ALGORITHM_EXPORT Algorithm : public video::Algorithm {
public:
    /// formats: the colour formats of the frames that Process accepts, in order of preference.
    Algorithm(hash::MurmurThree32 typeNameId, std::vector<media::ColourFormat> const& formats);
    Algorithm(Algorithm const& other);
    /// Copies: the source keeps what it has, and the new object is not in offline mode.
    Algorithm(Algorithm&& other);  // NOLINT(performance-noexcept-move-constructor): a copy may fail
    /// As the assignments of the base: the copying one keeps the offline mode, the moving one takes the source's.
    Algorithm& operator=(Algorithm const& other);
    Algorithm& operator=(Algorithm&& other) noexcept;
    ~Algorithm() override;

    /// Processes one frame, whose pixels may be changed in place, and adds to or enriches what result holds of it.
    virtual void Process(media::video::FrameBase<void>& frame, Result& result) = 0;
};

inline void swap(Algorithm& left, Algorithm& right) noexcept {
    swap(static_cast<video::Algorithm&>(left), static_cast<video::Algorithm&>(right));
}

}  // namespace qel::algorithm::video::inplace
