#include "qel/algorithm/info/base.hpp"

#include <utility>

#include "qel/type/to_string.hpp"

namespace qel::algorithm::info {

using configuration::Schema;
using configuration::node::Change;
using configuration::node::Option;
using inference::model::State;

Base::Base(configuration::Node& root, std::string_view name, std::string_view friendlyName, State state,
           std::string_view version)
    : root_(&root), name_(name), friendlyName_(friendlyName), version_(version), state_(state) {}

Base::Base(configuration::Node& root, std::string_view name, std::string_view friendlyName,
           std::vector<std::string> modelNames)
    : root_(&root), name_(name), friendlyName_(friendlyName), modelNames_(std::move(modelNames)) {}

Base::~Base() = default;

std::vector<Schema> Base::GetSchemas() const {
    return {
        Schema(TypenameNode, "The typename of this algorithm", "", GetFlags()),
        Schema(VersionNode, "The version of this algorithm", "", GetFlags()),
        Schema(ModelStatusNode, "The status of this algorithm", inference::model::ToString(State()), GetFlags(),
               State::GetAvailableStates()),
    };
}

void Base::Set(configuration::node::Map& map) const {
    // Not by GetTypename, which may not throw, not even when it finds no memory.
    map.Set(TypenameNode, type::ToString(GetAlgorithmType()));
    map.Set(std::vector<Change>{{VersionNode, version_}});
    map.Set(ModelStatusNode, inference::model::ToString(state_));
}

configuration::node::Options Base::GetFlags() const noexcept { return {Option::Transient, Option::ReadOnly}; }

std::string Base::GetTypename() const noexcept { return type::ToString(GetAlgorithmType()); }

}  // namespace qel::algorithm::info
