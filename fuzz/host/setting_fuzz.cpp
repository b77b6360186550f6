// What a person writes behind --set: applied, or refused as a usage error; a value that was applied reads back.
#include <cstdint>
#include <memory>
#include <string>

#include "check.hpp"
#include "error.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "setting.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel::configuration;
    auto const map = node::Map::Make("map");
    map->Schema({Schema("i", "", 1, {}, Range{-100, 100}), Schema("u", "", 7U), Schema("d", "", 0.5),
                 Schema("b", "", true), Schema("s", "", "text"), Schema("e", "", "red", {}, {"red", "green"}),
                 Schema("g.i", "", 4)});
    std::string const before = json::Data(*map);
    try {
        qel::host::Setting const setting = qel::host::ParseSetting({reinterpret_cast<char const*>(data), size});
        qel::host::Apply({setting}, *map, "tank");
    } catch (qel::host::UsageError const&) {
        qel::fuzz::Check(json::Data(*map) == before, "a refused setting has changed something");
    }
    return 0;
}
