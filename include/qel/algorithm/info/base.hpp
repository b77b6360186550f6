#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qel/algorithm/export.hpp"
#include "qel/algorithm/info/type.hpp"
#include "qel/configuration/node.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/schema.hpp"
#include "qel/inference/model/state.hpp"

namespace qel::algorithm::info {

inline constexpr char VersionNode[] = "version";           ///< the version of its model
inline constexpr char TypenameNode[] = "typename";         ///< what kind of algorithm it is
inline constexpr char ModelStatusNode[] = "model_status";  ///< where its models stand
inline constexpr char ClassesNode[] = "classes";           ///< the labels that it gives
inline constexpr char ColoursNode[] = "colours";           ///< the colours that it tells

/// Describes an analytic algorithm as it is published in the configuration tree: what it is, the version of its model
/// and where that model stands. The kinds derive from it and add what they can tell.
///
/// Never changes once made, so any thread may read it: later versions and states go to the tree (see InfoBuilder).
class QEL_ALGORITHM_EXPORT Base {
public:
    /// For an algorithm whose version and state are known. root: the map below which the algorithm is published; it
    /// must outlive the descriptor.
    Base(configuration::Node& root, std::string_view name, std::string_view friendlyName, inference::model::State state,
         std::string_view version);
    /// For an algorithm that runs these models: version and state become known when it is published.
    Base(configuration::Node& root, std::string_view name, std::string_view friendlyName,
         std::vector<std::string> modelNames);
    virtual ~Base();

    /// The nodes that the algorithm's map needs: "typename", "version", "model_status", then those of the kind.
    virtual std::vector<configuration::Schema> GetSchemas() const;
    /// Writes the descriptor's values into the algorithm's map, to which GetSchemas has been applied. Throws what the
    /// map throws; what has been written stays.
    virtual void Set(configuration::node::Map& map) const;
    virtual Type GetAlgorithmType() const = 0;

    /// The key under which the algorithm is published.
    std::string const& GetName() const noexcept { return name_; }
    /// The name for people.
    std::string const& GetFriendlyName() const noexcept { return friendlyName_; }
    /// Empty when it is not known.
    std::string const& GetVersion() const noexcept { return version_; }
    configuration::Node& GetConfigRoot() const noexcept { return *root_; }
    std::vector<std::string> const& GetModelNames() const noexcept { return modelNames_; }
    inference::model::State GetState() const noexcept { return state_; }
    /// The options of every node that is published: read-only to users, and made anew at each start.
    configuration::node::Options GetFlags() const noexcept;
    /// The text of GetAlgorithmType; a type without a text ends the process, and so does memory that is missing for it.
    std::string GetTypename() const noexcept;

    static char const* GetVersionNode() noexcept { return VersionNode; }
    static char const* GetTypenameNode() noexcept { return TypenameNode; }
    static char const* GetModelStatusNode() noexcept { return ModelStatusNode; }

private:
    configuration::Node* root_;
    std::string name_;
    std::string friendlyName_;
    std::string version_;
    inference::model::State state_;
    std::vector<std::string> modelNames_;
};

}  // namespace qel::algorithm::info
