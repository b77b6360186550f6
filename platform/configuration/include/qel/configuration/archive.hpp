#pragma once

// The JSON archives that the tree writes to and reads from; include <cereal/archives/json.hpp> to make one.
namespace cereal {

class JSONInputArchive;
class JSONOutputArchive;

}  // namespace cereal
