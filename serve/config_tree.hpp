#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>
#include <boost/json/object.hpp>

#include "algorithm_table.hpp"
#include "fault.hpp"
#include "qel/configuration/node/map.hpp"
#include "runtime.hpp"
#include "stream_spec.hpp"

namespace qel::serve {

class Staging;

/// The nodes of what is in effect: "streams" and "algorithms" in the tree of a runtime, made to follow a document.
/// One thread at a time; the nodes may be used on any.
class ConfigTree {
public:
    static constexpr std::size_t MaximumStreams = 256;
    static constexpr std::size_t MaximumAlgorithms = 16;
    /// How long a source and the name of a calibration's file may be.
    static constexpr std::size_t MaximumLocation = 4096;

    /// What Prepare has made ready.
    struct Plan {
        struct Exchange {
            std::shared_ptr<configuration::node::Map> map;
            std::vector<std::string> removed{};
            std::vector<std::shared_ptr<configuration::Node>> added{};
        };

        std::vector<Exchange> exchanges;
        /// The dotted paths of values that change, and of streams and algorithms' settings that come or go.
        std::vector<std::string> changed;
        /// What is kept although nobody knows it.
        std::vector<Fault> problems;
    };

    /// runtime: outlives the tree.
    explicit ConfigTree(host::Runtime& runtime);
    ConfigTree(ConfigTree const&) = delete;
    ConfigTree& operator=(ConfigTree const&) = delete;
    /// Takes "streams" out again; the algorithms' own settings stay as they are.
    ~ConfigTree();

    configuration::node::Map& GetRoot() noexcept { return runtime_.GetRoot(); }

    /// Checks a document and stages what differs from the one in effect; Apply or Discard follow. Algorithms that
    /// nobody knows are accepted as far as the document that is known holds the same.
    /// Throws Refused with everything that is wrong; nothing is staged then.
    Plan Prepare(boost::json::object const& next, boost::json::object const& current, boost::json::object const& known);
    /// Puts the plan into effect; the root is to be fired.
    void Apply(Plan plan);
    void Discard() { runtime_.GetRoot().Discard(); }

    /// The streams of the document in effect. folder: where relative files lie.
    std::vector<StreamSpec> MakeSpecs(boost::json::object const& document, boost::filesystem::path const& folder) const;

    /// The JSON schema of any stream, with no settings in it.
    static boost::json::object MakeStreamSchema();

    /// One run of Prepare.
    class Preparation;

private:
    host::Runtime& runtime_;
    AlgorithmTable table_;
    std::shared_ptr<configuration::node::Map> streams_;
};

}  // namespace qel::serve
