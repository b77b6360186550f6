#include "read_json.hpp"

#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include <cereal/archives/json.hpp>

#include "number_text.hpp"
#include "qel/object/parse.hpp"

namespace qel::configuration::detail {

namespace {

// The reader tells another JSON type by this exception, and a missing member by its base class.
using WrongType = cereal::RapidJSONException;

template <class T>
T Load(cereal::JSONInputArchive& archive) {
    T value{};
    archive.loadValue(value);
    return value;
}

template <class T>
bool TryLoad(cereal::JSONInputArchive& archive, T& value) {
    try {
        archive.loadValue(value);
        return true;
    } catch (WrongType const&) {
        return false;
    }
}

template <class T>
T LoadInteger(cereal::JSONInputArchive& archive) {
    using Limits = std::numeric_limits<T>;
    using Wide = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
    // The reader's own small types cut numbers off without a word.
    auto const wide = Load<Wide>(archive);
    if (!std::in_range<T>(wide)) {
        object::ThrowOutOfIntegerRange(std::to_string(wide), Limits::min(), Limits::max());
    }
    return static_cast<T>(wide);
}

template <class T>
char const* Expected() {
    if constexpr (std::is_same_v<T, std::string>) {
        return "a text";
    } else if constexpr (std::is_same_v<T, bool>) {
        return "true or false";
    } else if constexpr (std::is_same_v<T, double>) {
        return "a number";
    } else {
        return std::is_signed_v<T> ? "an integer" : "an unsigned integer";
    }
}

// What the archive's next value is, for messages.
std::string Describe(cereal::JSONInputArchive& archive) {
    bool truth{};
    if (TryLoad(archive, truth)) return truth ? "true" : "false";
    std::uint64_t natural{};
    if (TryLoad(archive, natural)) return "the number " + std::to_string(natural);
    std::int64_t integer{};
    if (TryLoad(archive, integer)) return "the number " + std::to_string(integer);
    double number{};
    if (TryLoad(archive, number)) return "the number " + NumberText(number);
    std::string text;
    if (TryLoad(archive, text)) return "the text '" + text + "'";
    std::nullptr_t null{};
    if (TryLoad(archive, null)) return "null";
    archive.startNode();
    return IsInList(archive) ? "a list" : "an object";
}

// Runs a step of reading: its failures get the path and say what was expected.
template <class Step>
auto Guarded(cereal::JSONInputArchive& archive, std::string const& path, char const* expected, Step const& step) {
    try {
        return step();
    } catch (WrongType const&) {
        ThrowUnexpected(archive, path, expected);
    } catch (cereal::Exception const& error) {
        throw cereal::Exception(path + ": " + error.what());
    }
}

}  // namespace

void ThrowUnexpected(cereal::JSONInputArchive& archive, std::string const& path, std::string const& expected) {
    throw cereal::Exception(path + ": expected " + expected + ", found " + Describe(archive));
}

bool IsInList(cereal::JSONInputArchive& archive) {
    cereal::size_type size{};
    try {
        archive.loadSize(size);
        return true;
    } catch (WrongType const&) {
        return false;
    }
}

template <object::PrimitiveValue T>
T ReadJson(cereal::JSONInputArchive& archive, std::string const& path) {
    return Guarded(archive, path, Expected<T>(), [&] {
        if constexpr (object::Number<T> && !std::is_same_v<T, double>) {
            return LoadInteger<T>(archive);
        } else {
            return Load<T>(archive);
        }
    });
}

template std::string ReadJson(cereal::JSONInputArchive&, std::string const&);
template bool ReadJson(cereal::JSONInputArchive&, std::string const&);
template unsigned char ReadJson(cereal::JSONInputArchive&, std::string const&);
template std::int32_t ReadJson(cereal::JSONInputArchive&, std::string const&);
template std::int64_t ReadJson(cereal::JSONInputArchive&, std::string const&);
template std::uint32_t ReadJson(cereal::JSONInputArchive&, std::string const&);
template double ReadJson(cereal::JSONInputArchive&, std::string const&);

std::shared_ptr<object::Object const> ReadAnyJson(cereal::JSONInputArchive& archive, std::string const& path) {
    return Guarded(archive, path, "a value", [&]() -> std::shared_ptr<object::Object const> {
        std::string text;
        if (TryLoad(archive, text)) return object::Make(std::move(text));
        bool truth{};
        if (TryLoad(archive, truth)) return object::Make(truth);
        std::int64_t integer{};
        if (TryLoad(archive, integer)) return object::Make(integer);
        return object::Make(Load<double>(archive));
    });
}

void ReadObject(cereal::JSONInputArchive& archive, std::string const& path, std::function<void()> const& action) {
    Guarded(archive, path, "an object", [&] { archive.startNode(); });
    if (IsInList(archive)) throw cereal::Exception(path + ": expected an object, found a list");
    action();
    archive.finishNode();
}

void ReadList(cereal::JSONInputArchive& archive, std::string const& path,
              std::function<void(std::size_t)> const& action) {
    Guarded(archive, path, "a list", [&] { archive.startNode(); });
    if (!IsInList(archive)) throw cereal::Exception(path + ": expected a list, found an object");
    cereal::size_type size{};
    archive.loadSize(size);
    action(static_cast<std::size_t>(size));
    archive.finishNode();
}

}  // namespace qel::configuration::detail
