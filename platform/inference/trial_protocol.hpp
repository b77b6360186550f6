#pragma once

// How this library and the program that tries models out speak: "PROGRAM BACK_END MAX_BATCH_SIZE AXIS...".

namespace qel::inference::trial {

inline constexpr char const* ProgramFile = "qel_model_trial";
/// Where the program finds the bytes of the model, and where it writes the verdict.
inline constexpr int ModelDescriptor = 0;
inline constexpr int VerdictDescriptor = 3;
/// The verdict on a model that may be loaded; any other is the reason why not.
inline constexpr char const* Passed = "passed";

}  // namespace qel::inference::trial
