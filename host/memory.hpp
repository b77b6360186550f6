#pragma once

namespace qel::host {

/// Prepares the heap for days of frames: large pieces, such as pictures, come from the system one by one and go back to
/// it, and threads share what they have. Takes a little more time than the heap's usual ways. Call it before any thread
/// is started.
void PrepareForLongRun() noexcept;

/// Gives memory that is free, but still held by the heap, back to the system; costs some milliseconds at most.
///
/// For after a large part of a program's memory was replaced, such as that of a decoder: what is left between the
/// pieces that live on would pile up over days.
void ReleaseFreeMemory() noexcept;

}  // namespace qel::host
