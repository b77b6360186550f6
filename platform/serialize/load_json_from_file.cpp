#include "qel/serialize/load_json_from_file.hpp"

#include <fstream>
#include <ios>
#include <iterator>

#include "qel/serialize/check_json.hpp"

namespace qel::serialize::detail {

namespace {

std::string Load(boost::filesystem::path const& path) {
    std::ifstream file(path.string(), std::ios::binary);
    if (!file) throw cereal::Exception(path.string() + ": the file cannot be opened");
    try {
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    } catch (std::ios_base::failure const&) {
        // A directory, for one, opens but cannot be read.
        throw cereal::Exception(path.string() + ": the file cannot be read");
    }
}

}  // namespace

std::string LoadJsonText(boost::filesystem::path const& path) {
    std::string text = Load(path);
    try {
        CheckJson(text);
    } catch (cereal::Exception const& error) {
        throw cereal::Exception(path.string() + ": " + error.what());
    }
    return text;
}

}  // namespace qel::serialize::detail
