#include "qel/algorithm/info/classification_algorithm.hpp"

#include <utility>

#include "qel/configuration/node/vector.hpp"

namespace qel::algorithm::info {

using configuration::Node;
using configuration::Schema;
using configuration::node::Change;

ClassificationAlgorithm::ClassificationAlgorithm(Node& root, std::string_view name, std::string_view friendlyName,
                                                 std::set<std::string> labels, inference::model::State state,
                                                 std::string_view version)
    : Base(root, name, friendlyName, state, version), labels_(std::move(labels)) {}

ClassificationAlgorithm::ClassificationAlgorithm(Node& root, std::string_view name, std::string_view friendlyName,
                                                 std::vector<std::string> modelNames, std::set<std::string> labels)
    : Base(root, name, friendlyName, std::move(modelNames)), labels_(std::move(labels)) {}

ClassificationAlgorithm::~ClassificationAlgorithm() = default;

std::vector<Schema> ClassificationAlgorithm::GetSchemas() const {
    auto schemas = Base::GetSchemas();
    schemas.emplace_back(std::string(ClassesNode) + "[*]", "The name of a class this algorithm can return", GetFlags());
    return schemas;
}

void ClassificationAlgorithm::Set(configuration::node::Map& map) const {
    Base::Set(map);
    auto const classes = Node::GetPtr<configuration::node::Vector>(map.Find(ClassesNode));
    for (std::string const& label : labels_) classes->Add({Change("", label)});
}

}  // namespace qel::algorithm::info
