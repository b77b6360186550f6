#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "fault.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::serve {

/// Stages what a document says in the nodes that it speaks of, and collects everything that is wrong with it.
/// One thread at a time.
class Staging {
public:
    /// How long a text may be.
    static constexpr std::size_t MaximumText = std::size_t{64} << 10U;
    /// How many faults are told at most.
    static constexpr std::size_t MaximumFaults = 100;

    /// Where the values of a map are looked for, the first one that has it first; each may be null. Where none has it,
    /// the node's default holds.
    using Layers = std::array<boost::json::object const*, 2>;

    /// Stages the values of a map whose layers were others before; those that are the same are left alone.
    /// path: of the map, for faults. skipped: a member that is not looked at.
    void Stage(configuration::node::Map& map, std::string const& path, Layers const& now, Layers const& before,
               std::string_view skipped = {});
    /// The same in a map that holds its defaults, as it is new.
    void StageNew(configuration::node::Map& map, std::string const& path, Layers const& now,
                  std::string_view skipped = {});

    void Refuse(std::string path, std::string reason);
    /// Adds the paths of values, or of whole maps, that are going to change.
    void Tell(std::string path) { changed_.push_back(std::move(path)); }

    /// Throws Refused if anything is wrong.
    void Finish() const;
    std::vector<std::string> TakeChanged() { return std::move(changed_); }

private:
    void RefuseUnknown(configuration::node::Map const& map, std::string const& path,
                       boost::json::object const& members);
    /// Refuses a value of a layer.
    void RefuseIn(std::size_t layer, Fault fault);
    void StageValue(configuration::Node& node, std::string const& path, Layers const& now, Layers const& before);

    std::vector<Fault> faults_;
    // What is wrong with values of the second layer: told where nothing else is, as they are told of there as well.
    std::vector<Fault> inherited_;
    std::vector<std::string> changed_;
    bool isNew_ = false;
};

/// "PATH.NAME", or NAME alone.
std::string JoinPath(std::string const& path, std::string_view name);

/// What a JSON value is, for messages: "the text 'x'", "a list".
std::string DescribeJson(boost::json::value const& value);

/// The member as an object; null where it is not there. Refuses what is none.
boost::json::object const* GetObject(boost::json::object const* parent, std::string_view name, std::string const& path,
                                     Staging& staging);

/// The member as an object; null where it is not there or none.
boost::json::object const* FindObject(boost::json::object const* parent, std::string_view name);

}  // namespace qel::serve
