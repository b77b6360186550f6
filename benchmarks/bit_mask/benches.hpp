#pragma once

#include "support/masks.hpp"

namespace qel::benchmarks {

/// Each checks its peers and registers its benchmarks at one size.
void RegisterOperations(Size size);
void RegisterFloodFill(Size size);

}  // namespace qel::benchmarks
