#include "qel/configuration/node/primitive.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "support/message_of.hpp"

namespace qel::configuration::node {
namespace {

using test::MessageOf;
using Byte = Primitive<unsigned char>;
using Text = Primitive<std::string>;
using Real = Primitive<double>;

constexpr Options ReadOnly{Option::ReadOnly};
constexpr Options WriteOnly{Option::WriteOnly};

static_assert(std::is_same_v<Options, type::Flags<Option, unsigned short, 64>>);
static_assert(ReadOnly.GetValue() == 8 && WriteOnly.GetValue() == 32);
static_assert(Options({Option::Gauge}).GetValue() == 1);
static_assert(Options({Option::ReadOnly, Option::Transient}).GetValue() == 10);

TEST(Primitive, IsMadeWithEverythingThatANodeCarries) {
    auto const before = std::chrono::system_clock::now();
    auto const node = Byte::Make("size", "How large", 7, Options(10));
    EXPECT_EQ(node->GetName(), "size");
    EXPECT_EQ(node->GetDescription(), "How large");
    EXPECT_EQ(node->GetOptions().GetValue(), 10);
    EXPECT_GE(node->GetTimestamp(), before);
    EXPECT_LE(node->GetTimestamp(), std::chrono::system_clock::now());
    EXPECT_EQ(node->Get(), 7);
    EXPECT_EQ(node->GetDefault()->As<object::Primitive<unsigned char>>().Get(), 7);
    EXPECT_EQ(node->GetStaged(), nullptr);
    EXPECT_EQ(node->GetValidator(), nullptr);
    EXPECT_EQ(node->GetParent(), nullptr);
}

TEST(Primitive, IsNamedAfterItsTypeOfValue) {
    EXPECT_STREQ(Text::Make("n", "", "")->GetTypeName(), "qel.configuration.node.String");
    EXPECT_STREQ(Byte::Make("n", "", 0)->GetTypeName(), "qel.configuration.node.UInt8");
    EXPECT_STREQ(Primitive<bool>::Make("n", "", false)->GetTypeName(), "qel.configuration.node.Bool");
    EXPECT_STREQ(Primitive<std::int32_t>::Make("n", "", 0)->GetTypeName(), "qel.configuration.node.Int32");
    EXPECT_STREQ(Primitive<std::int64_t>::Make("n", "", 0)->GetTypeName(), "qel.configuration.node.Int64");
    EXPECT_STREQ(Primitive<std::uint32_t>::Make("n", "", 0)->GetTypeName(), "qel.configuration.node.UInt32");
    EXPECT_STREQ(Real::Make("n", "", 0)->GetTypeName(), "qel.configuration.node.Double");
    EXPECT_EQ(Byte::Make("n", "", 0)->GetTypeId(), hash::MurmurThree32("qel.configuration.node.UInt8"));
}

TEST(Primitive, RefusesADefaultThatIsNotAllowed) {
    EXPECT_EQ(MessageOf<std::out_of_range>([] {
                  Byte::Make("size", "", 11, {}, Range{1, 10});
              }),
              "size: the value 11 is out of the range 1 to 10");
    EXPECT_EQ(MessageOf<std::out_of_range>([] { Real::Make("size", "", std::nan("")); }),
              "size: the value nan is not a finite number");
}

TEST(Primitive, RefusesAValidatorForAnotherKindOfValue) {
    EXPECT_EQ(MessageOf<std::invalid_argument>([] {
                  Text::Make("name", "", "", {}, Range{1, 10});
              }),
              "name: the validator is not one for values of type string");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { Byte::Make("size", "", 1, {}, Validator::Pattern("a")); }),
              "size: the validator is not one for values of type integer");
    EXPECT_EQ(
        MessageOf<std::invalid_argument>([] { Primitive<bool>::Make("on", "", true, {}, Validator::Minimum(0)); }),
        "on: the validator is not one for values of type boolean");
}

TEST(Primitive, MakesAStagedValueCurrentOnCommit) {
    auto const node = Text::Make("name", "", "a");
    auto const made = node->GetTimestamp();
    node->Stage("b");
    EXPECT_EQ(node->Get(), "a");
    EXPECT_EQ(node->GetStaged()->As<object::Primitive<std::string>>().Get(), "b");
    EXPECT_EQ(node->GetTimestamp(), made);
    node->Stage("c");
    node->Commit();
    EXPECT_EQ(node->Get(), "c");
    EXPECT_EQ(node->GetStaged(), nullptr);
    EXPECT_GT(node->GetTimestamp(), made);
    EXPECT_EQ(node->GetDefault()->As<object::Primitive<std::string>>().Get(), "a");
}

TEST(Primitive, IsUnchangedByACommitOfAnEqualValueOrOfNone) {
    auto const node = Byte::Make("size", "", 7);
    auto const made = node->GetTimestamp();
    node->Commit();
    node->Stage(7);
    node->Commit();
    EXPECT_EQ(node->GetStaged(), nullptr);
    EXPECT_EQ(node->GetTimestamp(), made);
}

TEST(Primitive, ForgetsAStagedValueOnDiscard) {
    auto const node = Byte::Make("size", "", 7);
    node->Stage(8);
    node->Discard();
    EXPECT_EQ(node->GetStaged(), nullptr);
    node->Commit();
    EXPECT_EQ(node->Get(), 7);
}

TEST(Primitive, IsSetAtOnceAndFires) {
    auto const node = Byte::Make("size", "", 7);
    auto const made = node->GetTimestamp();
    int calls = 0;
    auto const binding = node->Bind([&](auto const& event) {
        ++calls;
        EXPECT_EQ(event->GetNode().template As<Byte>().Get(), 8);
    });
    node->Stage(9);
    node->Set(8);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(node->Get(), 8);
    EXPECT_GT(node->GetTimestamp(), made);
    EXPECT_EQ(node->GetStaged(), nullptr) << "a value staged before must not come back";
    node->Set(8);
    EXPECT_EQ(calls, 1) << "nothing has changed";
}

TEST(Primitive, TakesTheValueOfAnotherObject) {
    auto const node = Byte::Make("size", "", 1);
    node->Set(object::Primitive<std::string>("7"));
    EXPECT_EQ(node->Get(), 7);
    node->Set(object::Primitive<unsigned char>(8));
    EXPECT_EQ(node->Get(), 8);
    node->Stage(object::Primitive<std::string>("9"));
    node->Commit();
    EXPECT_EQ(node->Get(), 9);
}

TEST(Primitive, RefusesAnObjectThatItCannotTake) {
    auto const node = Byte::Make("size", "", 1);
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->Set(object::Primitive<double>(7)); }),
              "Failed to cast the runtime object from 'qel.object.Double' to a 'qel.object.UInt8'");
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->Set(*node); }),
              "Failed to cast the runtime object from 'qel.configuration.node.UInt8' to a 'qel.object.UInt8'");
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(object::Primitive<std::string>("256")); }),
              "The parsed value '256' was out of range of the integer type: 0 to 255");
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] { node->Stage(object::Primitive<std::string>("abc")); }),
              "Failed to parse the string into an unsigned integer: abc");
    auto const text = Text::Make("name", "", "a");
    EXPECT_EQ(MessageOf<object::BadCast>([&] { text->Set(object::Primitive<unsigned char>(7)); }),
              "Failed to cast the runtime object from 'qel.object.UInt8' to a 'qel.object.String'");
    EXPECT_EQ(node->Get(), 1);
    EXPECT_EQ(text->Get(), "a");
}

TEST(Primitive, RefusesAValueOutOfRangeHoweverItComes) {
    auto const node = Real::Make("threshold", "", 2.5, {}, Range{1.0, 10.0});
    std::string const message = "threshold: the value 10.5 is out of the range 1 to 10";
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Stage(10.5); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(10.5); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(object::Primitive<std::string>("10.5")); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { json::Stage(*node, R"({"threshold": 10.5})"); }), message);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(std::numeric_limits<double>::infinity()); }),
              "threshold: the value inf is not a finite number");
    EXPECT_EQ(node->Get(), 2.5);
    EXPECT_EQ(node->GetStaged(), nullptr);
    node->Set(10.0);
    node->Set(1.0);
    EXPECT_EQ(node->Get(), 1.0);
}

TEST(Primitive, ReadsStagedDataFromJson) {
    auto const node = Byte::Make("size", "", 1);
    auto const changed = json::Stage(*node, R"({"size": 255})");
    ASSERT_EQ(changed.size(), 1U);
    EXPECT_EQ(changed[0], node);
    EXPECT_EQ(node->Get(), 1);
    node->Commit();
    EXPECT_EQ(node->Get(), 255);
    auto const text = Text::Make("name", "", "");
    json::Stage(*text, R"({"name": "\u00e9"})");
    text->Commit();
    EXPECT_EQ(text->Get(), "\xc3\xa9");
}

TEST(Primitive, ReadsTheNextValueOfAnArchive) {
    std::istringstream stream(R"({"first": 1, "second": 2})");
    cereal::JSONInputArchive archive(stream);
    auto const node = Byte::Make("size", "", 0);
    std::vector<std::shared_ptr<Node>> changed;
    node->StageData(archive, changed);
    node->Commit();
    EXPECT_EQ(node->Get(), 1);
    node->StageData(archive, changed);
    node->Commit();
    EXPECT_EQ(node->Get(), 2);
    EXPECT_EQ(changed.size(), 2U);
    EXPECT_EQ(MessageOf<cereal::Exception>([&] { node->StageData(archive, changed); }),
              "size: No more objects in input");
}

TEST(Primitive, SkipsDataThatEqualsItsValue) {
    auto const node = Byte::Make("size", "", 7);
    EXPECT_TRUE(json::Stage(*node, R"({"size": 7})").empty());
    EXPECT_EQ(node->GetStaged(), nullptr);
}

TEST(Primitive, TakesDataThatEqualsItsValueBackFromAStagedOne) {
    auto const node = Byte::Make("size", "", 7);
    node->Stage(8);
    EXPECT_EQ(json::Stage(*node, R"({"size": 7})").size(), 1U);
    node->Commit();
    EXPECT_EQ(node->Get(), 7);
}

TEST(Primitive, RefusesDataWhenItIsReadOnly) {
    auto const node = Byte::Make("size", "", 7, ReadOnly);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Stage(*node, R"({"size": 8})"); }),
              "size: the configuration value is dil read only");
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Stage(*node, R"({"size": "wrong"})"); }),
              "size: the configuration value is dil read only")
        << "the option is looked at before the value";
    EXPECT_EQ(node->GetStaged(), nullptr);
    node->Stage(8);
    node->Commit();
    EXPECT_EQ(node->Get(), 8) << "the program itself still writes it";
    node->Set(9);
    EXPECT_EQ(node->Get(), 9);
}

TEST(Primitive, RefusesToShowAWriteOnlyValue) {
    auto const node = Text::Make("password", "", "secret", WriteOnly);
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Data(*node); }),
              "password: the configuration value is write only");
    EXPECT_EQ(json::Defaults(*node), R"({"password": "secret"})");
    EXPECT_EQ(json::Schema(*node), R"({"type": "string","default": "secret","writeOnly": true})");
    EXPECT_EQ(json::Stage(*node, R"({"password": "new"})").size(), 1U);
}

TEST(Primitive, WritesItsValueAndItsDefault) {
    auto const node = Byte::Make("size", "", 7);
    node->Set(200);
    EXPECT_EQ(json::Data(*node), R"({"size": 200})");
    EXPECT_EQ(json::Defaults(*node), R"({"size": 7})");
    EXPECT_EQ(json::Data(*Primitive<bool>::Make("on", "", true)), R"({"on": true})");
    EXPECT_EQ(json::Data(*Primitive<std::int64_t>::Make("n", "", std::numeric_limits<std::int64_t>::min())),
              R"({"n": -9223372036854775808})");
    EXPECT_EQ(json::Data(*Primitive<std::uint32_t>::Make("n", "", 4294967295U)), R"({"n": 4294967295})");
    EXPECT_EQ(json::Data(*Real::Make("n", "", 0.1)), R"({"n": 0.1})");
    EXPECT_EQ(json::Data(*Text::Make("n", "", "a\n\"b\"")), R"({"n": "a\n\"b\""})");
}

TEST(Primitive, WritesOneValueUnderTheNextNameOfAnArchive) {
    std::ostringstream stream;
    {
        cereal::JSONOutputArchive archive(stream, cereal::JSONOutputArchive::Options::NoIndent());
        Byte::Make("size", "", 7)->Data(archive);
        archive.setNextName("other");
        Byte::Make("size", "", 8)->Defaults(archive);
    }
    EXPECT_EQ(stream.str(), "{\n\"value0\": 7,\n\"other\": 8\n}");
}

TEST(Primitive, ComparesTypeAndCurrentValue) {
    auto const node = Byte::Make("size", "", 7);
    auto const other = Byte::Make("other", "else", 8, ReadOnly);
    EXPECT_FALSE(node->EqualTo(*other));
    other->Set(7);
    EXPECT_TRUE(node->EqualTo(*other));
    EXPECT_TRUE(node->EqualTo(*node));
    EXPECT_FALSE(node->EqualTo(*Primitive<std::int32_t>::Make("size", "", 7)));
    EXPECT_FALSE(node->EqualTo(*Text::Make("size", "", "7")));
}

TEST(Primitive, CopiesTheValuesOfANodeOfTheSameType) {
    auto const source = Byte::Make("source", "from here", 7, ReadOnly, Range{5, 10});
    source->Set(8);
    source->Stage(9);
    auto const node = Byte::Make("size", "to here", 1);
    int calls = 0;
    auto const binding = node->Bind([&](auto const&) { ++calls; });
    node->Copy(*source);
    EXPECT_EQ(node->Get(), 8);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(node->GetDefault()->As<object::Primitive<unsigned char>>().Get(), 7);
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { node->Set(11); }), "size: the value 11 is out of the range 5 to 10");
    node->Commit();
    EXPECT_EQ(node->Get(), 9);
    EXPECT_EQ(source->Get(), 8);
    EXPECT_EQ(node->GetName(), "size");
    EXPECT_EQ(node->GetDescription(), "to here");
    EXPECT_EQ(node->GetOptions(), Options());
    node->Copy(*node);
    EXPECT_EQ(node->Get(), 9);
}

TEST(Primitive, DoesNotCopyANodeOfAnotherType) {
    auto const node = Byte::Make("size", "", 1);
    EXPECT_EQ(MessageOf<object::BadCast>([&] { node->Copy(*Text::Make("name", "", "7")); }),
              "Failed to cast the runtime object from 'qel.configuration.node.String' to a "
              "'qel.configuration.node.UInt8'");
}

TEST(PrimitiveJson, RefusesAnotherJsonType) {
    struct Case {
        char const* data;
        char const* message;
    };
    constexpr Case Cases[] = {
        {R"({"size": "7"})", "size: expected an unsigned integer, found the text '7'"},
        {R"({"size": true})", "size: expected an unsigned integer, found true"},
        {R"({"size": false})", "size: expected an unsigned integer, found false"},
        {R"({"size": null})", "size: expected an unsigned integer, found null"},
        {R"({"size": -1})", "size: expected an unsigned integer, found the number -1"},
        {R"({"size": 2.5})", "size: expected an unsigned integer, found the number 2.5"},
        {R"({"size": [7]})", "size: expected an unsigned integer, found a list"},
        {R"({"size": {"a": 7}})", "size: expected an unsigned integer, found an object"},
        {R"({"other": 7})", "size: JSON Parsing failed - provided NVP (size) not found"},
        {R"([7])", "size: JSON Parsing failed - provided NVP (size) not found"},
        {R"({})", "size: JSON Parsing failed - provided NVP (size) not found"},
        {R"([])", "size: JSON Parsing failed - provided NVP (size) not found"},
    };
    auto const node = Byte::Make("size", "", 7);
    for (Case const& c : Cases) {
        EXPECT_EQ(MessageOf<cereal::Exception>([&] { json::Stage(*node, c.data); }), c.message);
    }
    EXPECT_EQ(node->GetStaged(), nullptr);
}

TEST(PrimitiveJson, SaysWhatItExpects) {
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Text::Make("n", "", ""), R"({"n": 7})"); }),
              "n: expected a text, found the number 7");
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Primitive<bool>::Make("n", "", false), R"({"n": 1})"); }),
              "n: expected true or false, found the number 1");
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Real::Make("n", "", 0), R"({"n": "1"})"); }),
              "n: expected a number, found the text '1'");
    EXPECT_EQ(
        MessageOf<cereal::Exception>([] { json::Stage(*Primitive<std::int32_t>::Make("n", "", 0), R"({"n": 1.5})"); }),
        "n: expected an integer, found the number 1.5");
}

TEST(PrimitiveJson, RefusesANumberThatTheTypeCannotHold) {
    auto const error = [](auto node, char const* data) {
        return MessageOf<std::out_of_range>([&] { json::Stage(*node, data); });
    };
    EXPECT_EQ(error(Byte::Make("n", "", 0), R"({"n": 256})"),
              "The parsed value '256' was out of range of the integer type: 0 to 255");
    EXPECT_EQ(error(Byte::Make("n", "", 0), R"({"n": 18446744073709551615})"),
              "The parsed value '18446744073709551615' was out of range of the integer type: 0 to 255");
    EXPECT_EQ(error(Primitive<std::int32_t>::Make("n", "", 0), R"({"n": -2147483649})"),
              "The parsed value '-2147483649' was out of range of the integer type: -2147483648 to 2147483647");
    EXPECT_EQ(error(Primitive<std::uint32_t>::Make("n", "", 0), R"({"n": 4294967296})"),
              "The parsed value '4294967296' was out of range of the integer type: 0 to 4294967295");
    EXPECT_EQ(MessageOf<cereal::Exception>(
                  [] { json::Stage(*Primitive<std::int64_t>::Make("n", "", 0), R"({"n": 9223372036854775808})"); }),
              "n: expected an integer, found the number 9223372036854775808");
}

TEST(PrimitiveJson, KeepsEveryNumberExactly) {
    auto const roundTrip = [](auto node) {
        auto const value = node->Get();
        std::string const data = json::Data(*node);
        node->Set(decltype(node->Get()){});
        json::Stage(*node, data);
        node->Commit();
        EXPECT_EQ(node->Get(), value) << data;
    };
    roundTrip(Primitive<std::int64_t>::Make("n", "", std::numeric_limits<std::int64_t>::max()));
    roundTrip(Primitive<std::int64_t>::Make("n", "", std::numeric_limits<std::int64_t>::min()));
    roundTrip(Primitive<std::uint32_t>::Make("n", "", std::numeric_limits<std::uint32_t>::max()));
    roundTrip(Primitive<std::int32_t>::Make("n", "", std::numeric_limits<std::int32_t>::min()));
    roundTrip(Real::Make("n", "", 0.1 + 0.2));
    roundTrip(Real::Make("n", "", std::numeric_limits<double>::max()));
    roundTrip(Real::Make("n", "", std::numeric_limits<double>::denorm_min()));
    roundTrip(Text::Make("n", "", "\\\"\x01\xc3\xa9/"));
}

TEST(PrimitiveSchema, WritesTypeDefaultLimitsAndAccessInThisOrder) {
    struct Case {
        char const* name;
        std::shared_ptr<Node> node;
        char const* schema;
    };
    Options const both({Option::ReadOnly, Option::WriteOnly});
    Case const cases[] = {
        {"a text", Text::Make("n", "d", "x"), R"({"type": "string","default": "x"})"},
        {"a byte", Byte::Make("n", "d", 7), R"({"type": "integer","default": 7})"},
        {"a pattern", Text::Make("n", "d", "x", {}, Validator::Pattern("^x")),
         R"({"type": "string","default": "x","pattern": "^x"})"},
        {"a range", Byte::Make("n", "d", 7, {}, Range{1, 10}),
         R"({"type": "integer","default": 7,"minimum": 1,"maximum": 10})"},
        {"a minimum", Byte::Make("n", "d", 7, {}, Validator::Minimum(1)),
         R"({"type": "integer","default": 7,"minimum": 1})"},
        {"a maximum", Byte::Make("n", "d", 7, {}, Validator::Maximum(10)),
         R"({"type": "integer","default": 7,"maximum": 10})"},
        {"read-only", Byte::Make("n", "d", 7, ReadOnly, Range{1, 10}),
         R"({"type": "integer","default": 7,"minimum": 1,"maximum": 10,"readOnly": true})"},
        {"write-only", Byte::Make("n", "d", 7, WriteOnly), R"({"type": "integer","default": 7,"writeOnly": true})"},
        {"both", Text::Make("n", "d", "x", both, Validator::Pattern("x")),
         R"({"type": "string","default": "x","pattern": "x","readOnly": true,"writeOnly": true})"},
        {"an option of no account", Byte::Make("n", "d", 7, Options{Option::Transient}),
         R"({"type": "integer","default": 7})"},
        {"a bool", Primitive<bool>::Make("n", "d", true), R"({"type": "boolean","default": true})"},
        {"a real", Real::Make("n", "d", 2.5, {}, Range{0.5, 10.0}),
         R"({"type": "number","default": 2.5,"minimum": 0.5,"maximum": 10})"},
        {"a broken limit of an integer", Byte::Make("n", "d", 7, {}, Validator::Minimum(0.5)),
         R"({"type": "integer","default": 7,"minimum": 0.5})"},
        {"a limit past 64 bits", Real::Make("n", "d", 0, {}, Validator::Maximum(1e300)),
         R"({"type": "number","default": 0.0,"maximum": 1e300})"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(json::Schema(*c.node), c.schema);
    }
}

TEST(PrimitiveSchema, OfAGaugeAlwaysStatesTheLimitsAndReadOnly) {
    Options const gauge{Option::Gauge};
    EXPECT_EQ(json::Schema(*Byte::Make("n", "", 7, gauge)),
              R"({"type": "integer","default": 7,"minimum": 0,"maximum": 255,"readOnly": true})");
    EXPECT_EQ(json::Schema(*Byte::Make("n", "", 7, gauge, Range{1, 10})),
              R"({"type": "integer","default": 7,"minimum": 1,"maximum": 10,"readOnly": true})");
    EXPECT_EQ(json::Schema(*Byte::Make("n", "", 7, {Option::Gauge, Option::WriteOnly, Option::ReadOnly})),
              R"({"type": "integer","default": 7,"minimum": 0,"maximum": 255,"readOnly": true})");
    EXPECT_EQ(json::Schema(*Primitive<std::int64_t>::Make("n", "", 0, gauge)),
              R"({"type": "integer","default": 0,"minimum": -9223372036854775808,"maximum": 9223372036854775807,)"
              R"("readOnly": true})");
    EXPECT_EQ(json::Schema(*Real::Make("n", "", 0.5, gauge)), R"({"type": "number","default": 0.5,"readOnly": true})");
    EXPECT_EQ(json::Schema(*Text::Make("n", "", "x", gauge)), R"({"type": "string","default": "x"})");
}

}  // namespace
}  // namespace qel::configuration::node
