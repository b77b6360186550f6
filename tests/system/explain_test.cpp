#include "plugin/explain.hpp"

#include <gtest/gtest.h>

namespace qel::system::plugin {
namespace {

TEST(Explain, PutsTheLoadersReasonsIntoPlainWords) {
    struct Case {
        char const* text;
        char const* expected;
    };
    constexpr Case Cases[] = {
        {"libz.so.9: cannot open shared object file: No such file or directory",
         "needs the library libz.so.9, which cannot be opened: No such file or directory"},
        {"/p/liba.so: cannot open shared object file: Permission denied",
         "is refused by the loader: /p/liba.so: cannot open shared object file: Permission denied"},
        {"/p/liba.so: undefined symbol: _ZN3one3twoEi",
         "needs the symbol one::two(int), which no loaded library defines: it was built against other versions, or not "
         "linked with all it uses"},
        {"/p/liba.so: undefined symbol: plain_c_name, version LIB_2",
         "needs the symbol plain_c_name (version LIB_2), which no loaded library defines: it was built against other "
         "versions, or not linked with all it uses"},
        {"/lib/libb.so: undefined symbol: x",
         "needs the symbol x (through /lib/libb.so), which no loaded library defines: it was built against other "
         "versions, or not linked with all it uses"},
        {"/lib/libc.so.6: version `GLIBC_2.99' not found (required by /p/liba.so)",
         "was built for a newer system: it needs version GLIBC_2.99 of /lib/libc.so.6"},
        {"something unheard of", "is refused by the loader: something unheard of"},
        {"", "is refused by the loader: "},
    };
    for (Case const& c : Cases) EXPECT_EQ(Explain(c.text, "/p/liba.so"), c.expected);
}

}  // namespace
}  // namespace qel::system::plugin
