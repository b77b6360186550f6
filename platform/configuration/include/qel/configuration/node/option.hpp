#pragma once

#include "qel/type/flags.hpp"

namespace qel::configuration::node {

/// What is special about a node; each enumerator is a bit position of the option word.
enum class Option : unsigned char {
    /// A number that the program measures and reports. Its schema always states both limits of an integer (those of its
    /// type where the validator has none) and says that it is read-only. Other nodes do not look at the option.
    Gauge = 0,
    /// The program makes the value anew at each start: a host that saves its configuration leaves the node out.
    Transient = 1,
    /// Users may not change the node: StageData is refused. The program itself still writes it.
    ReadOnly = 3,
    /// Users may not see the value: Data is refused.
    WriteOnly = 5,
};

/// The options of a node: {Option::Transient, Option::ReadOnly} is the word 10.
using Options = type::Flags<Option, unsigned short, 64>;

}  // namespace qel::configuration::node
