#include "fault.hpp"

#include <gtest/gtest.h>

namespace qel::serve {
namespace {

TEST(Refused, TellsTheFirstFaultAndHowManyMoreThereAre) {
    EXPECT_STREQ(Refused(std::vector<Fault>{{"streams.gate.loop", "is no truth value"}}).what(),
                 "streams.gate.loop: is no truth value");
    EXPECT_STREQ(Refused(std::vector<Fault>{{"", "is no object"}}).what(), "is no object");
    Refused const refused({{"a", "is wrong"}, {"b", "is wrong too"}, {"c", "as well"}});
    EXPECT_STREQ(refused.what(), "a: is wrong (and 2 more)");
    EXPECT_EQ(refused.GetFaults()[1], (Fault{"b", "is wrong too"}));
}

}  // namespace
}  // namespace qel::serve
