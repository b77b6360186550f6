#pragma once

namespace qel::benchmarks {

/// Runs the registered benchmarks and prints one line for each "operation/mask/contestant" group: our median time and
/// spread ("qel"), and how many times as long each of the others takes.
/// Repetitions are interleaved at random; Google Benchmark's own options apply.
int RunAndCompare(int argc, char** argv);

}  // namespace qel::benchmarks
