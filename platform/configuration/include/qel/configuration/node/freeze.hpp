#pragma once

namespace qel::configuration::node {

/// What Node::Freeze makes of a node and all nodes below it.
enum class Freeze : unsigned char {
    /// Nothing may change any more: Set, Stage, StageData, Copy, Insert, Add, Schema and SetChoices throw
    /// std::logic_error, and what was staged is dropped. Reading, Bind and Fire go on.
    Frozen = 0,
    /// Changes are allowed (again).
    Thawed = 1,
};

}  // namespace qel::configuration::node
