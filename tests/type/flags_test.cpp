#include "qel/type/flags.hpp"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/message_of.hpp"

namespace qel::type {
namespace {

using qel::test::MessageOf;

enum class Letter { A, B, C, D, Last = 63, Past = 64 };
using Wide = Flags<Letter>;
using Narrow = Flags<Letter, unsigned short, 64>;

TEST(Flags, HoldsTheEnumeratorOfValuePAsBitP) {
    EXPECT_EQ(Wide().GetValue(), 0U);
    EXPECT_EQ(Wide({Letter::A}).GetValue(), 1U);
    EXPECT_EQ(Narrow({Letter::B, Letter::D}).GetValue(), 10U);
    EXPECT_EQ(Narrow({Letter::B, Letter::D}), Narrow(10));
    EXPECT_EQ(Wide({Letter::Last}).GetValue(), 0x8000000000000000U);
}

TEST(Flags, SetsTestsAndResets) {
    Wide flags;
    EXPECT_TRUE(flags.IsEmpty());
    flags.Set(Letter::C);
    EXPECT_TRUE(flags.Test(Letter::C));
    EXPECT_FALSE(flags.Test(Letter::B));
    flags.Reset(Letter::C);
    EXPECT_TRUE(flags.IsEmpty());
}

TEST(Flags, RefusesAPositionPastTheEndInTheWordsOfABitset) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Wide().Set(Letter::Past); }),
              "bitset::set: __position (which is 64) >= _Nb (which is 64)");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Wide().Reset(static_cast<Letter>(70)); }),
              "bitset::reset: __position (which is 70) >= _Nb (which is 64)");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Wide().Set(static_cast<Letter>(-1)); }),
              "bitset::set: __position (which is 18446744073709551615) >= _Nb (which is 64)");
    EXPECT_FALSE(Wide(~0ULL).Test(Letter::Past));
}

TEST(Flags, RefusesAPositionThatTheWordHasNoBitFor) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Narrow().Set(static_cast<Letter>(16)); }),
              "bitset::set: __position (which is 16) >= _Nb (which is 16)");
    EXPECT_EQ(Narrow().Set(static_cast<Letter>(15)).GetValue(), 0x8000U);
    EXPECT_FALSE(Narrow(0xffff).Test(Letter::Last));
}

}  // namespace
}  // namespace qel::type
