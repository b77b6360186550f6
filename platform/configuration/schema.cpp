#include "qel/configuration/schema.hpp"

#include <stdexcept>

#include "make_value.hpp"
#include "qel/configuration/node/map.hpp"

namespace qel::configuration {

namespace {

constexpr std::string_view Elements = "[*]";

// A path is names joined by dots, the last perhaps with "[*]" behind it; every name has characters, and none a bracket.
void CheckPath(std::string const& path) {
    std::string_view names = path;
    if (names.ends_with(Elements)) names.remove_suffix(Elements.size());
    bool const isValid = !names.empty() && names.front() != '.' && names.back() != '.' &&
                         names.find("..") == std::string_view::npos &&
                         names.find_first_of("[]") == std::string_view::npos;
    if (!isValid) {
        throw std::invalid_argument("The schema path '" + path +
                                    "' is not names joined by dots, perhaps with [*] at the end");
    }
}

}  // namespace

Schema::Schema(std::string path, std::string description, node::Options options)
    : Schema(std::move(path), std::move(description), nullptr, options, Validator(), std::nullopt) {}

Schema::Schema(std::string path, std::string description, std::shared_ptr<object::Object const> defaultValue,
               node::Options options, Validator validator, std::optional<std::set<std::string>> choices)
    : path_(std::move(path)),
      description_(std::move(description)),
      default_(std::move(defaultValue)),
      options_(options),
      validator_(std::move(validator)),
      choices_(std::move(choices)) {
    CheckPath(path_);
    // Whatever is wrong shows here, and not when the schema is applied.
    Make(path_);
}

std::shared_ptr<Node> Schema::Make(std::string name) const {
    if (!default_) return node::Map::Make(std::move(name), description_, options_);
    return Make(std::move(name), *default_);
}

std::shared_ptr<Node> Schema::Make(std::string name, object::Object const& defaultValue) const {
    if (choices_) {
        object::Primitive<std::string> text;
        text.Set(defaultValue);
        return node::DynamicEnum::Make(std::move(name), *choices_, text.Get(), description_, options_);
    }
    object::Object const& type = default_ ? *default_ : defaultValue;
    return detail::MakeValue(type, std::move(name), description_, defaultValue, options_, validator_);
}

}  // namespace qel::configuration
