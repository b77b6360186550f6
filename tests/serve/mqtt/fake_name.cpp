#include "fake_name.hpp"

#include <cstring>
#include <mutex>
#include <utility>

#include <dlfcn.h>
#include <netdb.h>

namespace qel::serve::mqtt::test {
namespace {

struct Known {
    std::mutex mutex;
    bool isThere = false;
    std::vector<std::string> addresses;
    std::function<void()> whenLookedUp;
};

/// Never destroyed: a look-up may outlive everything else.
Known& GetKnown() {
    static Known& known = *new Known;
    return known;
}

using LookUp = int (*)(char const*, char const*, addrinfo const*, addrinfo**);

LookUp GetSystem() {
    static auto const system = reinterpret_cast<LookUp>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return system;
}

/// Whether the name is a fake one of now.
bool IsFake(char const* name) {
    std::lock_guard const guard(GetKnown().mutex);
    return name != nullptr && std::strcmp(name, FakeName::Text) == 0 && GetKnown().isThere;
}

int LookUpFake(char const* service, addrinfo const* hints, addrinfo** found) {
    std::vector<std::string> addresses;
    std::function<void()> whenLookedUp;
    {
        std::lock_guard const guard(GetKnown().mutex);
        addresses = GetKnown().addresses;
        whenLookedUp = GetKnown().whenLookedUp;
    }
    if (whenLookedUp) whenLookedUp();
    addrinfo** end = found;
    *found = nullptr;
    for (std::string const& address : addresses) {
        addrinfo wanted{};
        wanted.ai_flags = AI_NUMERICHOST;
        wanted.ai_socktype = hints != nullptr ? hints->ai_socktype : 0;
        int const result = GetSystem()(address.c_str(), service, &wanted, end);
        if (result != 0) return result;
        end = &(*end)->ai_next;
    }
    return addresses.empty() ? EAI_NONAME : 0;
}

}  // namespace

FakeName::FakeName(std::vector<std::string> addresses, std::function<void()> whenLookedUp) {
    std::lock_guard const guard(GetKnown().mutex);
    GetKnown().isThere = true;
    GetKnown().addresses = std::move(addresses);
    GetKnown().whenLookedUp = std::move(whenLookedUp);
}

FakeName::~FakeName() {
    std::lock_guard const guard(GetKnown().mutex);
    GetKnown().isThere = false;
}

}  // namespace qel::serve::mqtt::test

// In place of that of the C library, also for the libraries that this program is linked with.
extern "C" [[gnu::visibility("default")]] int getaddrinfo(char const* name, char const* service, addrinfo const* hints,
                                                          addrinfo** found) {
    namespace test = qel::serve::mqtt::test;
    if (test::IsFake(name)) return test::LookUpFake(service, hints, found);
    return test::GetSystem()(name, service, hints, found);
}
