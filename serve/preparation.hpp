#pragma once

#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "algorithm_table.hpp"
#include "config_tree.hpp"
#include "staging.hpp"
#include "stream_nodes.hpp"

namespace qel::serve {

/// One run of ConfigTree::Prepare: checks a whole document against the nodes and makes what is missing of these.
class ConfigTree::Preparation {
public:
    struct Documents {
        boost::json::object const& next;
        boost::json::object const& current;
        boost::json::object const& known;
    };

    Preparation(host::Runtime& runtime, AlgorithmTable const& table,
                std::shared_ptr<configuration::node::Map> const& streams, Documents const& documents);

    /// Throws Refused; what has been staged by then is the caller's to discard.
    Plan Run();

private:
    using Entry = AlgorithmTable::Entry;
    /// The part of each document that is about one stream; null where there is none.
    struct Parts {
        boost::json::object const* next;
        boost::json::object const* current;
        boost::json::object const* known;
    };

    void StageAlgorithms();
    void StageStreams();
    void StageStream(std::string const& id, std::string const& path, Parts const& parts);
    void StageSettings(StreamNodes const& nodes, bool isNew, std::string const& path, Parts const& parts,
                       std::vector<Entry const*> const& listed);
    void CheckLocation(boost::json::object const& stream, char const* name, std::string const& path);
    /// The algorithms of a stream that are known.
    std::vector<Entry const*> CheckList(Parts const& parts, std::string const& path);
    /// Whether the list of a stream in the document that is known holds this name.
    static bool IsListed(boost::json::object const* stream, std::string_view name);
    /// Keeps what is known already as a problem, refuses anything else.
    void KeepOrRefuse(std::string const& path, std::string_view name, bool isKnown);

    host::Runtime& runtime_;
    AlgorithmTable const& table_;
    std::shared_ptr<configuration::node::Map> streams_;
    Documents documents_;
    boost::json::object const* algorithms_ = nullptr;
    boost::json::object const* currentAlgorithms_;
    Staging staging_;
    Plan plan_;
};

}  // namespace qel::serve
