#pragma once

// Operations whose allocations are failed one after the other. An operation is three functions: one makes what it works
// on, afresh for each attempt; one does it; one describes what it works on, so that states can be compared.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qel::oom {

/// What holds of an operation that runs out of memory. All of them can be repeated, and then do what they always do.
enum class Promise {
    Strong,  ///< std::bad_alloc, and nothing has changed
    Basic,   ///< std::bad_alloc, and everything is whole, though some of the work may be done
    Stream,  ///< the std::ostream that is written to goes bad, as standard output operators have it
    Silent,  ///< the operation does not fail: it goes without
};

/// One attempt.
class Attempt {
public:
    Attempt() = default;
    Attempt(Attempt const&) = delete;
    Attempt& operator=(Attempt const&) = delete;
    virtual ~Attempt() = default;

    virtual void Act() = 0;
    virtual std::string Describe() const = 0;
};

struct Operation {
    /// "subsystem/Operation".
    std::string name;
    Promise promise;
    std::function<std::unique_ptr<Attempt>()> make;
    /// It starts a thread, which frees what it is given: the blocks that are left in this one do not count.
    bool startsThread = false;
};

namespace detail {

template <class State, class Action, class Description>
class AttemptOf final : public Attempt {
public:
    template <class Make>
    AttemptOf(Make const& make, Action action, Description description)
        : state_(make()), action_(std::move(action)), description_(std::move(description)) {}
    void Act() override { action_(state_); }
    std::string Describe() const override { return description_(state_); }

private:
    State state_;
    Action action_;
    Description description_;
};

}  // namespace detail

template <class Make, class Action, class Description>
Operation MakeOperation(std::string name, Promise promise, Make make, Action action, Description description) {
    using Concrete = detail::AttemptOf<decltype(make()), Action, Description>;
    return {std::move(name), promise, [=] { return std::make_unique<Concrete>(make, action, description); }, false};
}

/// Runs an action that throws an E, and returns what that says.
template <class E, class Action>
std::string Caught(Action const& action) {
    try {
        action();
    } catch (E const& error) {
        return error.what();
    }
    return "nothing was thrown";
}

/// How many allocations were failed.
struct Points {
    std::size_t once = 0;
    std::size_t forGood = 0;
};

/// Fails each allocation of the operation, and says by GoogleTest what did not go as promised.
Points Sweep(Operation const& operation);

using Operations = std::vector<Operation>;

Operations PlatformOperations();
Operations ConfigurationOperations();
Operations JsonOperations();
Operations PropertyOperations();
Operations ImageOperations();
Operations InfoOperations();
Operations InferenceOperations();
Operations VideoOperations();

}  // namespace qel::oom
