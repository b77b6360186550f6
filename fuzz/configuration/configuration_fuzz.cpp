// Untrusted data for a configuration: taken whole or not at all, and what was taken is written and read back alike.
#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "check.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"

namespace {

using qel::fuzz::Check;
using namespace qel::configuration;

/// A node of each kind, some with ranges.
std::shared_ptr<node::Map> MakeTree() {
    auto map = node::Map::Make("map");
    map->Schema({Schema("i", "", 1, {}, Range{-100, 100}), Schema("u", "", 7U), Schema("l", "", std::int64_t{5}),
                 Schema("c", "", static_cast<unsigned char>(3)), Schema("d", "", 0.5, {}, Range{-1.5, 2.5}),
                 Schema("b", "", true), Schema("s", "", "text"), Schema("e", "", "red", {}, {"red", "green"}),
                 Schema("g.i", "", 4), Schema("g.s", "", "x"), Schema("v[*]", "", 1), Schema("w[*]", "", "y")});
    return map;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const tree = MakeTree();
    std::string const before = json::Data(*tree);
    try {
        json::Stage(*tree, std::string(reinterpret_cast<char const*>(data), size));
    } catch (std::exception const&) {
        tree->Commit();
        Check(json::Data(*tree) == before, "something is left of data that was refused");
        return 0;
    }
    Check(json::Data(*tree) == before, "staged data shows before it is committed");
    tree->Commit();
    std::string const after = json::Data(*tree);
    auto const copy = MakeTree();
    json::Stage(*copy, after);
    copy->Commit();
    Check(json::Data(*copy) == after, "data that was written reads back otherwise");
    return 0;
}
