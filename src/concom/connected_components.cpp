#include "qel/algorithm/connected_components.hpp"

#include <memory>
#include <stdexcept>

#include "concom/labeller.hpp"

namespace qel::algorithm {

struct ConnectedComponents::Impl : concom::Labeller {};

ConnectedComponents::ConnectedComponents() : impl_(std::make_unique<Impl>()) {}
ConnectedComponents::ConnectedComponents(ConnectedComponents&& other) noexcept = default;
ConnectedComponents& ConnectedComponents::operator=(ConnectedComponents other) noexcept {
    swap(*this, other);
    return *this;
}
ConnectedComponents::~ConnectedComponents() = default;

std::size_t ConnectedComponents::Connect8Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return impl_->Connect(mask, true, min_area, blobs);
}

std::size_t ConnectedComponents::Connect4Way(BitMask const& mask, unsigned int min_area, std::vector<Blob>& blobs) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return impl_->Connect(mask, false, min_area, blobs);
}

}  // namespace qel::algorithm
