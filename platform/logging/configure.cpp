#include "qel/logging/configure.hpp"

#include "rules.hpp"
#include "state.hpp"

namespace qel::logging {

void Configure(std::string_view text) { State::Get().SetRules(Rules::Parse(text)); }

}  // namespace qel::logging
