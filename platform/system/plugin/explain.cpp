#include "plugin/explain.hpp"

#include <boost/core/demangle.hpp>

namespace qel::system::plugin {
namespace {

/// The text before and after a marker; found is false, and both are empty, when the marker is missing.
struct Parts {
    bool found;
    std::string_view before, after;
};

Parts Split(std::string_view text, std::string_view marker) {
    auto const position = text.find(marker);
    if (position == std::string_view::npos) return {false, {}, {}};
    return {true, text.substr(0, position), text.substr(position + marker.size())};
}

/// A C++ name as it is written in the source; any other name as it is ("x" would read as the type long long).
std::string Demangle(std::string_view symbol) {
    std::string const name(symbol);
    return name.starts_with("_Z") ? boost::core::demangle(name.c_str()) : name;
}

}  // namespace

std::string Explain(std::string_view loaderText, std::string_view file) {
    if (auto const [found, library, cause] = Split(loaderText, ": cannot open shared object file: ");
        found && library != file) {
        return "needs the library " + std::string(library) + ", which cannot be opened: " + std::string(cause);
    }
    if (auto const [found, user, symbol] = Split(loaderText, ": undefined symbol: "); found) {
        auto const [hasVersion, name, version] = Split(symbol, ", version ");
        std::string text = Demangle(hasVersion ? name : symbol);
        if (hasVersion) text += " (version " + std::string(version) + ")";
        std::string const whose = user == file ? "" : " (through " + std::string(user) + ")";
        return "needs the symbol " + text + whose +
               ", which no loaded library defines: it was built against other versions, or not linked with all it uses";
    }
    if (auto const [found, library, rest] = Split(loaderText, ": version `"); found) {
        if (auto const [hasEnd, version, user] = Split(rest, "' not found"); hasEnd) {
            return "was built for a newer system: it needs version " + std::string(version) + " of " +
                   std::string(library);
        }
    }
    return "is refused by the loader: " + std::string(loaderText);
}

}  // namespace qel::system::plugin
