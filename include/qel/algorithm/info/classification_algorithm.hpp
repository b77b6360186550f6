#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "qel/algorithm/info/base.hpp"

namespace qel::algorithm::info {

/// Describes an algorithm that gives things one of a set of labels, published as the vector "classes". Any thread.
class QEL_ALGORITHM_EXPORT ClassificationAlgorithm : public Base {
public:
    ClassificationAlgorithm(configuration::Node& root, std::string_view name, std::string_view friendlyName,
                            std::set<std::string> labels, inference::model::State state, std::string_view version);
    ClassificationAlgorithm(configuration::Node& root, std::string_view name, std::string_view friendlyName,
                            std::vector<std::string> modelNames, std::set<std::string> labels);
    ~ClassificationAlgorithm() override;

    /// Those of Base, then the one of the elements of "classes".
    std::vector<configuration::Schema> GetSchemas() const override;
    /// Adds the labels in ascending order to "classes", behind those that are there already. Throws object::BadCast
    /// when there is no such vector.
    void Set(configuration::node::Map& map) const override;

    std::set<std::string> const& GetLabels() const noexcept { return labels_; }

    static char const* GetClassesNode() noexcept { return ClassesNode; }

private:
    std::set<std::string> labels_;
};

}  // namespace qel::algorithm::info
