#pragma once

#include <functional>
#include <string>

namespace qel::benchmarks {

/// The body of a benchmark program: has its benchmarks registered, runs them and prints one line for each
/// "operation/mask/contestant" group: our median time and spread ("qel"), and how many times as long each of the others
/// takes. Repetitions are interleaved at random; one thread.
///
/// Options: Google Benchmark's own, --masks=FOLDER (adds the masks that qel_demo_masks has written there) and
/// --table=FILE (writes all times as JSON, nanoseconds). Returns the exit code.
int RunProgram(int argc, char** argv, std::function<void()> const& registerBenchmarks);

}  // namespace qel::benchmarks
