#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qel/configuration/node/map.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "runtime.hpp"

namespace qel::serve {

/// The algorithms that a configuration may speak of. A constant: any thread may read.
class AlgorithmTable {
public:
    struct Entry {
        hash::MurmurThree32 id;
        /// As its map is called: "Motion".
        std::string name;
        /// "algorithms.<name>".
        std::shared_ptr<configuration::node::Map> common;
    };

    /// Makes the configurations of all registered algorithms.
    explicit AlgorithmTable(host::Runtime& runtime);

    std::vector<Entry> const& GetEntries() const noexcept { return entries_; }
    /// The algorithm whose map has this name; null when there is none.
    Entry const* FindByName(std::string_view name) const;
    /// The algorithm that `qel run --algorithm` would take by this name; null when there is none, or when several are
    /// meant.
    Entry const* FindByUse(std::string_view name) const;
    /// What to say of a name that means none, or several: the nearest one, and all.
    std::string ExplainUnknown(std::string_view name) const;

private:
    std::vector<Entry> entries_;
};

}  // namespace qel::serve
