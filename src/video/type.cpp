#include "qel/algorithm/video/type.hpp"

namespace qel::type {

namespace {

constexpr std::uint64_t Key(algorithm::video::Type type) { return static_cast<std::uint64_t>(type); }

}  // namespace

StringMap const& Strings<algorithm::video::Type>::GetMap() {
    using algorithm::video::Type;
    static StringMap const strings = {
        {Key(Type::Inplace), "inplace"},
        {Key(Type::Passthrough), "passthrough"},
        {Key(Type::Transform), "transform"},
    };
    return strings;
}

}  // namespace qel::type
