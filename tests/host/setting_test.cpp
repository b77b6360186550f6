#include "setting.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "error.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::host {
namespace {

namespace node = configuration::node;
using qel::test::MessageOf;
using testing::ElementsAre;

TEST(ParseSetting, SplitsAtTheFirstEqualsSign) {
    Setting const setting = ParseSetting("a.b=c=d");
    EXPECT_EQ(setting.name, "a.b");
    EXPECT_EQ(setting.value, "c=d");
    EXPECT_EQ(ParseSetting("name=").value, "");
    for (char const* text : {"", "=", "=value", "name"}) EXPECT_THROW((void)ParseSetting(text), UsageError) << text;
}

TEST(Apply, SetsNodesFurtherDownByTheirPaths) {
    auto const map = node::Map::Make("Top");
    map->Schema({{"a.depth", "", std::int32_t{3}}, {"b", "", std::string("x")}, {"v[*]", "", std::int32_t{0}}});
    EXPECT_THAT(ListValues(*map), ElementsAre("a.depth", "b"));
    Apply({{"a.depth", "-7"}, {"b", " any text "}}, *map, "it");
    EXPECT_EQ(map->Find("a.depth")->As<node::Primitive<std::int32_t>>().Get(), -7);
    EXPECT_EQ(map->Find("b")->As<node::Primitive<std::string>>().Get(), " any text ");
    EXPECT_EQ(MessageOf<UsageError>([&] {
                  Apply({{"a", "1"}}, *map, "it");
              }),
              "unknown property 'a' of it; did you mean 'b'? (known: a.depth, b)");
    EXPECT_EQ(MessageOf<UsageError>([&] {
                  Apply({{"a.deth", "1"}}, *map, "it");
              }),
              "unknown property 'a.deth' of it; did you mean 'a.depth'? (known: a.depth, b)");
}

TEST(Apply, TellsWhatIsWrongWithAValueAndKeepsWhatCameBefore) {
    auto const map = node::Map::Make("Top");
    map->Schema({{"count", "", std::int32_t{3}, {}, configuration::Range{1, 9}},
                 {"byte", "", static_cast<unsigned char>(7), {}, configuration::Range{0, 255}}});
    auto const errorOf = [&](Setting const& setting) {
        return MessageOf<UsageError>([&] { Apply({{"count", "5"}, setting}, *map, "it"); });
    };
    EXPECT_EQ(errorOf({"count", "10"}),
              "cannot set 'count' to '10': Top.count: the value 10 is out of the range 1 to 9");
    EXPECT_EQ(errorOf({"count", "99999999999"}),
              "cannot set 'count' to '99999999999': Top.count: the value 99999999999 is out of the range 1 to 9");
    EXPECT_EQ(map->Find("count")->As<node::Primitive<std::int32_t>>().Get(), 5);
    EXPECT_NE(errorOf({"byte", "7x"}), "nothing was thrown");
    EXPECT_NE(errorOf({"byte", ""}), "nothing was thrown");
    EXPECT_EQ(map->Find("byte")->As<node::Primitive<unsigned char>>().Get(), 7);
}

TEST(Apply, SaysThatThereAreNoProperties) {
    EXPECT_EQ(MessageOf<UsageError>([] {
                  Apply({{"a", "1"}}, *node::Map::Make("Top"), "the algorithm 'Top'");
              }),
              "unknown property 'a': the algorithm 'Top' has no properties");
}

}  // namespace
}  // namespace qel::host
