#include "qel/property/properties.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace qel::property {

struct Properties::Impl {
    Property* Find(std::string const& name) const {
        auto const found = std::find_if(properties.begin(), properties.end(),
                                        [&name](auto const& property) { return property->GetName() == name; });
        return found == properties.end() ? nullptr : found->get();
    }

    // Released after the properties, which use it.
    std::shared_ptr<void> owner;
    std::vector<std::unique_ptr<Property>> properties;
};

Properties::Properties(std::shared_ptr<void> owner, std::vector<Schema> schemas)
    : Properties(nullptr, std::move(owner), std::move(schemas)) {}

Properties::Properties(Binder& binder, std::shared_ptr<void> owner, std::vector<Schema> schemas)
    : Properties(&binder, std::move(owner), std::move(schemas)) {}

Properties::Properties(Binder* binder, std::shared_ptr<void> owner, std::vector<Schema> schemas)
    : impl_(std::make_unique<Impl>()) {
    impl_->owner = std::move(owner);
    for (Schema& schema : schemas) {
        std::string const& name = schema.GetName();
        if (impl_->Find(name) != nullptr) throw std::invalid_argument(name + ": there are two properties of this name");
        auto node = binder != nullptr ? binder->Find(name) : nullptr;
        impl_->properties.push_back(std::make_unique<Property>(std::move(schema), impl_->owner.get(), std::move(node)));
    }
}

Properties::Properties(Properties&& other) noexcept = default;

Properties& Properties::operator=(Properties other) noexcept {
    swap(*this, other);
    return *this;
}

Properties::~Properties() = default;

Properties::operator bool() const noexcept { return impl_ && impl_->owner; }

bool Properties::operator==(Properties const& other) const {
    if (impl_ == other.impl_) return true;
    if (!impl_ || !other.impl_) return false;
    return std::equal(impl_->properties.begin(), impl_->properties.end(), other.impl_->properties.begin(),
                      other.impl_->properties.end(),
                      [](auto const& left, auto const& right) { return left->GetSchema() == right->GetSchema(); });
}

Property& Properties::operator[](std::string const& name) const {
    if (Property* const property = impl_ ? impl_->Find(name) : nullptr) return *property;
    std::string known;
    for (Property const& property : GetAll()) known += (known.empty() ? "" : ", ") + property.GetName();
    throw std::out_of_range("There is no property '" + name + "', only: " + (known.empty() ? "none" : known));
}

std::vector<std::reference_wrapper<Property>> Properties::GetAll() const {
    std::vector<std::reference_wrapper<Property>> all;
    if (!impl_) return all;
    all.reserve(impl_->properties.size());
    for (auto const& property : impl_->properties) all.emplace_back(*property);
    return all;
}

}  // namespace qel::property
