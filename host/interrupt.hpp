#pragma once

namespace qel::host {

/// Turns the wish of a person (Ctrl-C) or of the system (SIGTERM) to end the process into a question, while it lives.
///
/// The first signal is only taken note of; a second one ends the process at once. One object at a time.
class Interrupt {
public:
    Interrupt();
    Interrupt(Interrupt const&) = delete;
    Interrupt& operator=(Interrupt const&) = delete;
    ~Interrupt();

    /// The signal that came, 0 for none.
    int GetSignal() const noexcept;
};

}  // namespace qel::host
