#include "qel/type/strings.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/type/to_string.hpp"

namespace qel::type {
namespace {

enum class Fruit { Apple, Pear, Plum };

}  // namespace

template <>
struct Strings<Fruit> {
    static StringMap const& GetMap() {
        static StringMap const map = {{0, "apple"}, {1, "pear"}};
        return map;
    }
};

namespace {

TEST(ToString, GivesTheTextOfAnEnumerator) {
    EXPECT_EQ(ToString(Fruit::Apple), "apple");
    EXPECT_EQ(ToString<Fruit>(Fruit(1)), "pear");
}

TEST(ToString, RefusesAValueWithoutAText) {
    try {
        ToString(Fruit::Plum);
        FAIL();
    } catch (std::invalid_argument const& error) {
        EXPECT_STREQ(error.what(),
                     "Cannot convert the enum into its string representation as the value is out of range of the "
                     "string representation map");
    }
}

}  // namespace
}  // namespace qel::type
