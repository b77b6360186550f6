#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <boost/filesystem/path.hpp>

#include "qel/algorithm/video/registry/info.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/inference/backend/manager.hpp"

namespace qel::host {

/// What all algorithms of a process share: the manager of their models, and the tree of their configuration.
///
///     (root)
///       algorithms
///         info
///           motion        a descriptor that an algorithm has published: "typename", "version", "model_status", ...
///         Motion          the properties of an algorithm, under the last part of its type name
///
/// A host makes one and hands it by reference to whatever makes algorithms; it outlives them. The nodes may be used on
/// any thread; everything else on one at a time.
class Runtime {
public:
    /// Is given a line for each thing that does not work while the rest goes on.
    using Warn = std::function<void(std::string const&)>;

    /// models: the folder with a folder for each model; an empty path: there are no models.
    /// Throws UsageError when it is no folder.
    explicit Runtime(boost::filesystem::path const& models = {}, Warn warn = {});
    /// With a manager of the caller's.
    explicit Runtime(std::unique_ptr<inference::backend::Manager> manager, Warn warn = {});

    inference::backend::Manager& GetManager() noexcept { return *manager_; }
    configuration::node::Map& GetRoot() noexcept { return *root_; }
    /// "algorithms.info".
    configuration::node::Map& GetDescriptors() noexcept { return *descriptors_; }

    /// The map of an algorithm's configuration, made on the first call, which publishes the algorithm's descriptor too:
    /// what goes wrong with that is a warning. Throws what the algorithm throws when it makes its nodes.
    ///
    /// Where the last part of the type name is taken by another algorithm, or is "info", the map bears the whole one.
    std::shared_ptr<configuration::node::Map> MakeConfiguration(algorithm::video::registry::Info const& info);

    /// The map that MakeConfiguration has made for an algorithm; null where it has made none.
    std::shared_ptr<configuration::node::Map> FindConfiguration(hash::MurmurThree32 id) const;

    /// Nodes like those of FindConfiguration, under the same name and with the algorithm's own defaults, that are part
    /// of no tree: for an algorithm that is to be set apart from others of its kind. Takes the registry's lock. Any
    /// thread, as long as nobody makes a configuration meanwhile. Throws Error where there is none, and what the
    /// algorithm throws.
    std::shared_ptr<configuration::node::Map> MakeOwnConfiguration(hash::MurmurThree32 id) const;

    /// Makes the configuration of every registered algorithm; what one throws is a warning.
    void MakeConfigurations();

private:
    std::shared_ptr<configuration::node::Map> MakeMap(std::string const& typeName);
    void Warning(algorithm::video::registry::Info const& info, std::string const& problem) const;

    Warn warn_;
    std::shared_ptr<configuration::node::Map> root_;
    std::shared_ptr<configuration::node::Map> algorithms_;
    std::shared_ptr<configuration::node::Map> descriptors_;
    std::map<hash::MurmurThree32, std::shared_ptr<configuration::node::Map>> configurations_;
    // The last member: it ends first, and with it the changes that it tells the tree of.
    std::unique_ptr<inference::backend::Manager> manager_;
};

/// Where models lie unless a person says otherwise: the first folder share/qel/models beside one of the three folders
/// above the loaded libqel_algorithm.so; an empty path when there is none.
boost::filesystem::path FindModels();

}  // namespace qel::host
