#pragma once

#include <exception>
#include <string>
#include <typeinfo>

namespace qel::test {

/// What an action throws as an E (or a class derived from it), or a text that says what it did instead.
/// E: not std::exception itself.
template <class E, class Action>
std::string MessageOf(Action const& action) {
    try {
        action();
    } catch (E const& error) {
        return error.what();
    } catch (std::exception const& error) {
        return std::string("threw another type, ") + typeid(error).name() + ": " + error.what();
    }
    return "nothing was thrown";
}

}  // namespace qel::test
