#include "qel/algorithm/calibration/params.hpp"

#include <utility>

namespace qel::algorithm::calibration {

struct Params::Impl {
    bool enabled = false;
    float tilt = 0;
    float roll = 0;
    float verticalFov = 0;
    Length height{};
};

Params::Params() : impl_(std::make_unique<Impl>()) {}

Params::Params(float tilt, float roll, Length height, float verticalFov)
    : Params(true, tilt, roll, height, verticalFov) {}

Params::Params(bool enabled, float tilt, float roll, Length height, float verticalFov)
    : impl_(std::make_unique<Impl>(Impl{enabled, tilt, roll, verticalFov, height})) {}

Params::Params(Params const& other)
    : Params(other.IsEnabled(), other.GetTilt(), other.GetRoll(), other.GetHeight(), other.GetVerticalFov()) {}

Params::Params(Params&& other) noexcept = default;

Params& Params::operator=(Params other) noexcept {
    swap(*this, other);
    return *this;
}

Params::~Params() = default;

bool Params::IsEnabled() const { return impl_->enabled; }
float Params::GetTilt() const { return impl_->tilt; }
float Params::GetRoll() const { return impl_->roll; }
Length Params::GetHeight() const { return impl_->height; }
float Params::GetVerticalFov() const { return impl_->verticalFov; }

void Params::SetEnabled(bool enabled) { impl_->enabled = enabled; }
void Params::SetTilt(float tilt) { impl_->tilt = tilt; }
void Params::SetRoll(float roll) { impl_->roll = roll; }
void Params::SetHeight(Length height) { impl_->height = height; }
void Params::SetVerticalFov(float verticalFov) { impl_->verticalFov = verticalFov; }

bool Params::operator==(Params const& other) const {
    return IsEnabled() == other.IsEnabled() && GetTilt() == other.GetTilt() && GetRoll() == other.GetRoll() &&
           GetHeight() == other.GetHeight() && GetVerticalFov() == other.GetVerticalFov();
}

bool Params::operator!=(Params const& other) const { return !(*this == other); }

void swap(Params& left, Params& right) noexcept { left.impl_.swap(right.impl_); }

}  // namespace qel::algorithm::calibration
