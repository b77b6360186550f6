#include "qel/algorithm/calibration/engine.hpp"

#include "calibration/engine_impl.hpp"

namespace qel::algorithm::calibration {

Engine::Engine() : impl_(std::make_unique<Impl>()) {}

Engine::~Engine() = default;

bool Engine::IsCalibrationEnabled() const { return impl_->params.IsEnabled(); }

int Engine::GetCalibrationStatus() const { return impl_->status; }

Params const& Engine::GetCalibrationParams() const { return impl_->params; }

void Engine::SetCalibrationParams(Params const& params) {
    impl_->params = params;
    impl_->UpdateStatus();
    impl_->dimension = {};
    impl_->RecalculateModel();
}

geometry::Point<float, 2> Engine::UnprojectPoint(Point point) const {
    return impl_->UnprojectPoint(Impl::GetLogicalCoord(point));
}

Length Engine::GetDistance(Point a, Point b, geometry::Dimension<int, 2> const& imageSize) const {
    impl_->RequireCalibration();
    impl_->UpdateModel(imageSize);
    return impl_->GetDistance(a, b) * boost::units::si::meters;
}

Length Engine::GetHeight(Point foot, geometry::normalized::Value<unsigned short> objectHeight,
                         geometry::Dimension<int, 2> const& imageSize) const {
    impl_->RequireCalibration();
    impl_->UpdateModel(imageSize);
    return impl_->GetHeight(foot, objectHeight.value) * boost::units::si::meters;
}

}  // namespace qel::algorithm::calibration
