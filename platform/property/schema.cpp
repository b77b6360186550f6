#include "qel/property/schema.hpp"

#include <algorithm>
#include <stdexcept>

#include "qel/configuration/node/value.hpp"

namespace qel::property {

namespace {

configuration::Schema const& FindValue(configuration::Property const& property) {
    auto const found =
        std::find_if(property.schemas.begin(), property.schemas.end(),
                     [&property](configuration::Schema const& schema) { return schema.GetPath() == property.name; });
    if (found == property.schemas.end()) {
        throw std::invalid_argument(property.name + ": the property has no schema of its own name");
    }
    return *found;
}

bool IsSameDefault(configuration::Schema const& left, configuration::Schema const& right) {
    using configuration::node::Value;
    auto const leftNode = left.Make("value")->GetPtr<Value>();
    return leftNode->EqualTo(*right.Make("value")->GetPtr<Value>());
}

bool IsSameLimit(configuration::Validator const& left, configuration::Validator const& right) {
    return left.GetMinimum() == right.GetMinimum() && left.GetMaximum() == right.GetMaximum() &&
           left.GetPattern() == right.GetPattern();
}

}  // namespace

Schema::Schema(configuration::Schema value, Setter setter, Getter getter)
    : value_(std::move(value)), setter_(std::move(setter)), getter_(std::move(getter)) {
    if (!value_.GetDefault()) throw std::invalid_argument(GetName() + ": the property has no default");
}

Schema::Schema(configuration::Property const& property) : Schema(FindValue(property), property.setter) {}

bool Schema::IsReadOnly() const noexcept {
    return !setter_ || value_.GetOptions().Test(configuration::node::Option::ReadOnly);
}

bool Schema::operator==(Schema const& other) const {
    return GetName() == other.GetName() && value_.GetDescription() == other.value_.GetDescription() &&
           value_.GetOptions() == other.value_.GetOptions() && value_.GetChoices() == other.value_.GetChoices() &&
           IsSameLimit(value_.GetValidator(), other.value_.GetValidator()) && IsSameDefault(value_, other.value_) &&
           !setter_ == !other.setter_ && !getter_ == !other.getter_;
}

}  // namespace qel::property
