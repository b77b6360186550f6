#include "qel/algorithm/video/algorithm.hpp"

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "qel/algorithm/video/registry/get.hpp"
#include "qel/configuration/event.hpp"
#include "qel/configuration/node.hpp"
#include "qel/type/flags.hpp"

namespace qel::algorithm::video {

namespace {

using Setter = std::function<void(void*, object::Object const&)>;

type::Binding BindMember(configuration::node::Map& map, std::string const& name, Algorithm* algorithm, Setter setter) {
    using configuration::node::binding::Option;
    std::shared_ptr<configuration::Node> const node = map.Find(name);
    if (!node || !setter) return {};
    auto handler = [setter = std::move(setter), algorithm](std::shared_ptr<configuration::Event const> const& event) {
        setter(algorithm, event->GetNode());
    };
    return node->Bind(std::move(handler), {Option::CallNow});
}

}  // namespace

struct Algorithm::Impl {
    Impl(hash::MurmurThree32 id, Type type, std::vector<media::ColourFormat> formats)
        : typeNameId(id), kinds({type}), supportedColourFormats(std::move(formats)) {}

    hash::MurmurThree32 typeNameId;
    type::Flags<Type> kinds;
    std::vector<media::ColourFormat> supportedColourFormats;
    bool offlineModeEnabled = false;
};

Algorithm::Algorithm(hash::MurmurThree32 typeNameId, Type type, std::vector<media::ColourFormat> formats)
    : impl_(std::make_unique<Impl>(typeNameId, type, std::move(formats))) {}

Algorithm::Algorithm(Algorithm const& other) : impl_(std::make_unique<Impl>(other.Get())) {
    impl_->offlineModeEnabled = false;
}

Algorithm::Algorithm(Algorithm&& other) noexcept = default;

Algorithm& Algorithm::operator=(Algorithm const& other) {
    if (!impl_) throw std::logic_error("Pimpl is null");
    Impl copy = other.Get();
    copy.offlineModeEnabled = impl_->offlineModeEnabled;
    *impl_ = std::move(copy);
    return *this;
}

Algorithm& Algorithm::operator=(Algorithm&& other) noexcept = default;

Algorithm::~Algorithm() = default;

void Algorithm::Reset() {}

std::vector<type::Binding> Algorithm::BindToConfiguration(configuration::node::Map& map) {
    std::vector<type::Binding> bindings;
    auto const lock = registry::Get().GetMap();
    std::vector<configuration::Property> const& properties = lock->at(GetTypeNameId()).GetProperties();
    bindings.reserve(properties.size());
    for (configuration::Property const& property : properties) {
        bindings.push_back(BindMember(map, property.name, this, property.setter));
    }
    return bindings;
}

hash::MurmurThree32 Algorithm::GetTypeNameId() const noexcept {
    return impl_ ? impl_->typeNameId : hash::MurmurThree32();
}

std::vector<media::ColourFormat> const& Algorithm::GetSupportedColourFormats() const {
    return Get().supportedColourFormats;
}

bool Algorithm::GetOfflineModeEnabled() const noexcept { return impl_->offlineModeEnabled; }

void Algorithm::SetOfflineModeEnabled(bool enabled) noexcept { impl_->offlineModeEnabled = enabled; }

template <>
bool Algorithm::Is<inplace::Algorithm>() const noexcept {
    return impl_ && impl_->kinds.Test(Type::Inplace);
}

template <>
bool Algorithm::Is<passthrough::Algorithm>() const noexcept {
    return impl_ && impl_->kinds.Test(Type::Passthrough);
}

bool Algorithm::operator==(Algorithm const& other) const noexcept {
    if (impl_ == other.impl_) return true;
    if (!impl_ || !other.impl_) return false;
    return impl_->typeNameId == other.impl_->typeNameId && impl_->kinds == other.impl_->kinds &&
           impl_->supportedColourFormats == other.impl_->supportedColourFormats;
}

Algorithm::Impl const& Algorithm::Get() const {
    if (!impl_) throw std::logic_error("Pimpl is null");
    return *impl_;
}

}  // namespace qel::algorithm::video
