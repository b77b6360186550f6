#include "qel/algorithm/video/passthrough/algorithm.hpp"

#include <utility>

namespace qel::algorithm::video::passthrough {

Algorithm::Algorithm(hash::MurmurThree32 typeNameId, std::vector<media::ColourFormat> const& formats)
    : video::Algorithm(typeNameId, Type::Passthrough, formats) {}

Algorithm::Algorithm(Algorithm const& other) = default;

// Bound setters and hosts hold the source by address, so it stays whole: moving copies.
Algorithm::Algorithm(Algorithm&& other) : video::Algorithm(static_cast<video::Algorithm const&>(other)) {}

Algorithm& Algorithm::operator=(Algorithm const& other) = default;

Algorithm& Algorithm::operator=(Algorithm&& other) noexcept = default;

Algorithm::~Algorithm() = default;

}  // namespace qel::algorithm::video::passthrough
