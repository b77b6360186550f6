// An algorithm with settings of every kind, and one of the same short name: what is done with them does not count here.

#include <cstdint>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "qel/algorithm/video/passthrough/algorithm.hpp"
#include "qel/algorithm/video/registry/property.hpp"
#include "qel/algorithm/video/registry/register.hpp"
#include "qel/configuration/validator.hpp"

namespace {

namespace video = qel::algorithm::video;
namespace registry = video::registry;
using qel::configuration::Property;
using qel::configuration::Range;
using qel::configuration::Schema;
using qel::configuration::Validator;
using qel::configuration::node::Option;

constexpr char const* SampleName = "test.Sample";
constexpr char const* OtherSampleName = "test.other.Sample";
constexpr char const* TwistedName = "test.Twisted";

template <class T>
Property Make(char const* path, T value, Validator validator = {}, qel::configuration::node::Options options = {}) {
    return {path, {Schema(path, "Says nothing", value, options, std::move(validator))}, {}};
}

std::vector<Property> const& Properties() {
    static std::vector<Property> const properties = {
        Make("byte", std::uint8_t{5}, Range{1, 250}),
        Make("count", std::int32_t{-3}, Range{-100, 100}),
        Make("big", std::int64_t{1}),
        Make("area", std::uint32_t{40}, Range{1, 1000}),
        Make("ratio", 0.5, Range{0.0, 1.0}),
        Make("any", 2.0),
        Make("on", true),
        Make("word", std::string("abc"), Validator::Pattern("^[a-z]*$")),
        Make("text", std::string()),
        {"mode", {Schema("mode", "One of three", "fast", {}, {"fast", "slow", "exact"})}, {}},
        Make("below.deep", 7),
        {"names", {Schema("names[*]", "A name", "")}, {}},
        Make("measured", 0.0, {}, {Option::ReadOnly}),
        Make("gauged", 0, {}, {Option::Gauge}),
        Make("fleeting", 1, {}, {Option::Transient}),
        Make("secret", std::string("none"), {}, {Option::WriteOnly}),
    };
    return properties;
}

std::vector<Property> const& OtherProperties() {
    static std::vector<Property> const properties = {Make("size", 1)};
    return properties;
}

template <char const* const& Name>
class Sample final : public video::passthrough::Algorithm {
public:
    Sample() : Algorithm(qel::hash::MurmurThree32(Name), {qel::media::ColourFormat::Grey8}) {}
    void Process(qel::media::video::FrameBase<void const> const& /*frame*/, video::Result& /*result*/) override {}
};

bool Register(char const* name, registry::Info::Make make, registry::Info::CreateNodes nodes) {
    return registry::Register({qel::hash::MurmurThree32(name), name, std::move(make), {}, std::move(nodes)});
}

[[maybe_unused]] bool const Registered =
    Register(
        SampleName, [](auto&) { return std::make_shared<Sample<SampleName>>(); }, registry::CreateNodes(Properties)) &&
    Register(
        OtherSampleName, [](auto&) { return std::make_shared<Sample<OtherSampleName>>(); },
        registry::CreateNodes(OtherProperties)) &&
    Register(
        TwistedName, [](auto&) { return std::make_shared<Sample<TwistedName>>(); },
        [](auto&, auto const&) { throw std::runtime_error("no room"); });

}  // namespace
