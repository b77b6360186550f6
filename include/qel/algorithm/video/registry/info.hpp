#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/configuration/node.hpp"
#include "qel/configuration/property.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/inference/backend/manager.hpp"

namespace qel::algorithm::video {

class Algorithm;

namespace registry {

/// What the registry holds of a video algorithm: how to make it, what to configure and where that is kept. Any thread.
class QEL_ALGORITHM_EXPORT Info {
public:
    using Make = std::function<std::shared_ptr<Algorithm>(inference::backend::Manager&)>;
    using Properties = std::function<std::vector<configuration::Property> const&()>;
    using CreateNodes = std::function<void(inference::backend::Manager&, std::shared_ptr<configuration::Node>)>;

    /// typeNameId: the identifier of typeName, under which the entry is registered and which the instances report.
    /// typeName: not owned, must outlive the entry. Each of the functions may be empty.
    Info(hash::MurmurThree32 typeNameId, char const* typeName, Make make, Properties properties,
         CreateNodes createConfigNodes) noexcept;

    hash::MurmurThree32 const& GetTypeNameId() const noexcept { return typeNameId_; }
    char const* GetTypeName() const noexcept { return typeName_; }
    /// The factory of instances; an empty one throws std::bad_function_call when called.
    Make const& GetMake() const noexcept { return make_; }
    /// The configurable properties; none when there is no function for them. A function that throws ends the process.
    std::vector<configuration::Property> const& GetProperties() const noexcept;
    /// Creates the nodes of the algorithm's configuration under node; does nothing when there is no function for it.
    void CreateConfigNodes(inference::backend::Manager& manager, std::shared_ptr<configuration::Node> node) const;

private:
    hash::MurmurThree32 typeNameId_;
    char const* typeName_;
    Make make_;
    Properties properties_;
    CreateNodes createConfigNodes_;
};

}  // namespace registry
}  // namespace qel::algorithm::video
