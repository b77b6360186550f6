#pragma once

#include "support/masks.hpp"

namespace qel::benchmarks {

/// Each checks its peers and registers its benchmarks at one size.
void RegisterConnectedComponents(Size size);
void RegisterLineByLine(Size size);

}  // namespace qel::benchmarks
