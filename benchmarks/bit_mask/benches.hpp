#pragma once

#include "support/masks.hpp"

namespace qel::benchmarks {

/// Each checks its peers and registers its benchmarks at one size.
void RegisterOperations(Size size);
void RegisterFloodFill(Size size);
void RegisterThreshold(Size size);
/// On one canvas of 1080p.
void RegisterFillPolygon();

}  // namespace qel::benchmarks
