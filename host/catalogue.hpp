#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>

#include "qel/algorithm/video/algorithm.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "runtime.hpp"

namespace qel::host {

/// The type names of all registered algorithms, in their order.
std::vector<std::string> ListAlgorithms();

/// What there is to say when no algorithm is registered.
extern char const* const NoAlgorithm;

/// What a person may want to know of an algorithm.
struct AlgorithmDescription {
    std::string typeName;
    /// "inplace", "passthrough" or "transform".
    std::string kind;
    /// The names of the formats, most wanted first.
    std::vector<std::string> colourFormats;
    /// The file that registered it: a plug-in, or the program itself.
    std::string file;
    /// The JSON schema of each property, by name, in the order of its configuration.
    boost::json::object properties;
    /// Why the algorithm cannot be described further; empty when it can.
    std::string problem;
};

/// The last part of a dotted type name: "Motion" of "qel.algorithm.video.Motion".
std::string_view GetShortName(std::string_view typeName) noexcept;

/// All registered algorithms, in the order of their type names; nothing is published.
std::vector<AlgorithmDescription> DescribeAlgorithms(Runtime& runtime);

/// "inplace", "passthrough" or "transform".
std::string GetKind(algorithm::video::Algorithm const& algorithm);

/// The identifier of the algorithm that is meant by a type name, or by the last part of one, as IsSameName compares.
/// Throws UsageError, with the names that there are, when none or several are meant.
hash::MurmurThree32 FindAlgorithm(std::string_view name);

}  // namespace qel::host
