#include "qel/algorithm/video/properties.hpp"

#include <stdexcept>
#include <utility>

namespace qel::algorithm::video {

struct Properties::Impl {
    Impl(std::shared_ptr<Algorithm> shared, std::vector<property::Schema> schemas)
        : algorithm(std::move(shared)), properties(std::shared_ptr<void>(algorithm), std::move(schemas)) {}

    Impl(std::shared_ptr<Algorithm> shared, property::Binder& binder, std::vector<property::Schema> schemas)
        : algorithm(std::move(shared)), properties(binder, std::shared_ptr<void>(algorithm), std::move(schemas)) {}

    Algorithm& GetAlgorithm() const {
        if (!algorithm) throw std::logic_error("Could not dereference null Algorithm pointer");
        return *algorithm;
    }

    // In this order: the properties use the algorithm and go first.
    std::shared_ptr<Algorithm> algorithm;
    property::Properties properties;
};

Properties::Properties(std::shared_ptr<Algorithm> algorithm, std::vector<property::Schema> schemas)
    : impl_(std::make_unique<Impl>(std::move(algorithm), std::move(schemas))) {}

Properties::Properties(std::shared_ptr<Algorithm> algorithm, property::Binder& binder,
                       std::vector<property::Schema> schemas)
    : impl_(std::make_unique<Impl>(std::move(algorithm), binder, std::move(schemas))) {}

Properties::Properties(Properties&& other) noexcept = default;

Properties& Properties::operator=(Properties other) noexcept {
    swap(*this, other);
    return *this;
}

Properties::~Properties() = default;

Properties::operator bool() const noexcept { return impl_ && impl_->algorithm && static_cast<bool>(impl_->properties); }

bool Properties::operator==(Properties const& other) const {
    if (impl_ == other.impl_) return true;
    if (!impl_ || !other.impl_) return false;
    return impl_->properties == other.impl_->properties && impl_->algorithm == other.impl_->algorithm;
}

property::Properties& Properties::GetProperties() { return Get().properties; }

property::Properties const& Properties::GetProperties() const { return Get().properties; }

property::Property& Properties::GetProperty(std::string const& name) const { return Get().properties[name]; }

Algorithm& Properties::GetAlgorithm() { return Get().GetAlgorithm(); }

Algorithm const& Properties::GetAlgorithm() const { return Get().GetAlgorithm(); }

std::shared_ptr<Algorithm> Properties::GetAlgorithmPtr() const { return impl_ ? impl_->algorithm : nullptr; }

Properties::Impl& Properties::Get() const {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return *impl_;
}

}  // namespace qel::algorithm::video
