#include "qel/logging/level.hpp"

qel::type::StringMap const& qel::type::Strings<qel::logging::Level>::GetMap() {
    static StringMap const map = {{1, "debug"},  {2, "information"}, {4, "notice"}, {8, "warning"},
                                  {16, "error"}, {32, "critical"},   {64, "off"}};
    return map;
}
