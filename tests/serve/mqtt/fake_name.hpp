#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qel::serve::mqtt::test {

/// A name of the network that this process alone knows, for as long as the object lives: whoever looks it up is told
/// these addresses, in this order. One object at a time.
class FakeName {
public:
    /// whenLookedUp: called by whoever looks the name up, before anything is found; may wait; may be empty.
    explicit FakeName(std::vector<std::string> addresses, std::function<void()> whenLookedUp = {});
    FakeName(FakeName const&) = delete;
    FakeName& operator=(FakeName const&) = delete;
    ~FakeName();

    static constexpr char const* Text = "broker.fake";
};

}  // namespace qel::serve::mqtt::test
