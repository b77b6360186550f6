#include "qel/configuration/node/vector.hpp"

#include <stdexcept>

#include <cereal/archives/json.hpp>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "support/message_of.hpp"

namespace qel::configuration::node {
namespace {

using test::MessageOf;

std::shared_ptr<Vector> MakeNumbers(Options options = {}) {
    return Vector::Make("numbers", "Some numbers", options,
                        Schema("numbers[*]", "A number", 1.0, options, Range{0.0, 10.0}));
}

std::shared_ptr<Vector> MakeStates() {
    return Vector::Make("states", "", {}, Schema("states[*]", "A state", "off", {}, {"off", "on"}));
}

TEST(Vector, StartsEmpty) {
    auto const vector = MakeNumbers(Options(10));
    EXPECT_STREQ(vector->GetTypeName(), "qel.configuration.node.Vector");
    EXPECT_EQ(vector->GetDescription(), "Some numbers");
    EXPECT_EQ(vector->GetOptions().GetValue(), 10);
    EXPECT_EQ(vector->GetSize(), 0U);
    EXPECT_EQ(vector->Find(0), nullptr);
    EXPECT_TRUE(vector->Is<Dynamic>());
    EXPECT_FALSE(vector->Is<Value>());
}

TEST(Vector, AppendsTheElementsThatAreAdded) {
    auto const vector = Vector::Make("classes", "", {}, Schema("classes[*]", "A class", Options(10)));
    Dynamic& dynamic = *vector;
    dynamic.Add({{"", "car"}});
    dynamic.Add({{"", "person"}, {"third", "dog"}});
    ASSERT_EQ(vector->GetSize(), 3U);
    auto const first = Node::GetPtr<Primitive<std::string>>(vector->Find(0));
    EXPECT_EQ(first->Get(), "car");
    EXPECT_EQ(first->GetName(), "");
    EXPECT_EQ(first->GetDescription(), "A class");
    EXPECT_EQ(first->GetOptions().GetValue(), 10);
    EXPECT_EQ(first->GetParent(), vector);
    EXPECT_EQ(first->GetDefault()->As<object::Primitive<std::string>>().Get(), "car");
    EXPECT_EQ(vector->GetElements()[2]->GetName(), "third");
    EXPECT_EQ(json::Data(*vector), R"({"classes": ["car","person","dog"]})");
}

TEST(Vector, ReplacesItsElementsInOneStepAndFires) {
    auto const vector = Vector::Make("classes", "", Options(10), Schema("classes[*]", "A class", Options(10)));
    vector->Add({{"", "car"}, {"", "person"}, {"", "dog"}});
    auto const former = vector->Find(0);
    std::vector<std::string> told;
    auto const binding = vector->Bind([&](auto const&) { told.push_back(json::Data(*vector)); });
    vector->Replace({{"", "cat"}, {"named", "person"}});
    EXPECT_EQ(told, std::vector<std::string>{R"({"classes": ["cat","person"]})"});
    EXPECT_EQ(former->GetParent(), nullptr);
    EXPECT_EQ(vector->Find(0)->GetParent(), vector);
    EXPECT_EQ(vector->Find(0)->GetDescription(), "A class");
    EXPECT_EQ(vector->Find(1)->GetName(), "named");
    vector->Replace({});
    EXPECT_EQ(vector->GetSize(), 0U);
    EXPECT_EQ(told.size(), 2U);
}

TEST(Vector, ReplacesNothingByTheSameValues) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 1.0}, {"", 2.0}});
    auto const first = vector->Find(0);
    int told = 0;
    auto const binding = vector->Bind([&](auto const&) { ++told; });
    vector->Replace({{"", 1.0}, {"", "2"}});
    EXPECT_EQ(vector->Find(0), first);
    EXPECT_EQ(told, 0);
    vector->Replace({{"", 2.0}, {"", 1.0}});
    EXPECT_EQ(told, 1);
}

TEST(Vector, ReplacesAllOrNothing) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 1.0}});
    EXPECT_EQ(MessageOf<std::out_of_range>([&] {
                  vector->Replace({{"", 2.0}, {"", 11.0}});
              }),
              "numbers[1]: the value 11 is out of the range 0 to 10");
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] {
                  vector->Replace({{"", 2.0}, {"", nullptr}});
              }),
              "numbers[1]: there is no value to add");
    vector->Freeze(Freeze(0));
    EXPECT_THROW(vector->Replace({{"", 3.0}}), std::logic_error);
    EXPECT_EQ(json::Data(*vector), R"({"numbers": [1.0]})");
}

TEST(Vector, GivesElementsTheTypeOfTheirSchema) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 2.5}, {"", "3.5"}});
    EXPECT_EQ(Node::GetPtr<Primitive<double>>(vector->Find(1))->Get(), 3.5);
    Node::GetPtr<Primitive<double>>(vector->Find(1))->Set(4);
    EXPECT_EQ(json::Data(*vector), R"({"numbers": [2.5,4.0]})");
    auto const states = MakeStates();
    states->Add({{"", "on"}});
    EXPECT_EQ(Node::GetPtr<DynamicEnum>(states->Find(0))->Get(), "on");
}

TEST(Vector, WithoutATypeTakesEveryValue) {
    auto const vector = Vector::Make("any");
    vector->Add({{"", "text"}, {"", true}, {"", static_cast<unsigned char>(7)}, {"", std::int64_t{8}}, {"", 0.5}});
    EXPECT_EQ(json::Data(*vector), R"({"any": ["text",true,7,8,0.5]})");
    EXPECT_EQ(MessageOf<object::BadCast>([&] {
                  vector->Add({{"", Vector::Make("a")}});
              }),
              "Failed to cast the runtime object from 'qel.configuration.node.Vector' to a "
              "'qel.configuration.node.Value'");
}

TEST(Vector, AddsAllOrNothing) {
    auto const vector = MakeNumbers();
    int calls = 0;
    auto const binding = vector->Bind([&](auto const&) { ++calls; });
    auto const made = vector->GetTimestamp();
    EXPECT_EQ(MessageOf<std::out_of_range>([&] {
                  vector->Add({{"", 1.0}, {"", 11.0}});
              }),
              "numbers[1]: the value 11 is out of the range 0 to 10");
    EXPECT_EQ(MessageOf<object::BadCast>([&] {
                  vector->Add({{"", 1.0}, {"", true}});
              }),
              "Failed to cast the runtime object from 'qel.object.Bool' to a 'qel.object.Double'");
    EXPECT_EQ(MessageOf<std::invalid_argument>([&] {
                  vector->Add({{"", 1.0}, {"", std::shared_ptr<object::Object const>()}});
              }),
              "numbers[1]: there is no value to add");
    EXPECT_EQ(MessageOf<std::out_of_range>([] {
                  MakeStates()->Add({{"", "On"}});
              }),
              "states[0]: the value 'On' is not one of the choices 'off', 'on'");
    EXPECT_EQ(vector->GetSize(), 0U);
    EXPECT_EQ(vector->GetTimestamp(), made);
    EXPECT_EQ(calls, 0);
}

TEST(Vector, FiresWhenElementsAreAdded) {
    auto const vector = MakeNumbers();
    auto const made = vector->GetTimestamp();
    std::size_t seen = 0;
    int calls = 0;
    auto const binding = vector->Bind([&](auto const& event) {
        ++calls;
        seen = event->GetNode().template As<Vector>().GetSize();
    });
    vector->Add({{"", 1.0}, {"", 2.0}});
    EXPECT_EQ(seen, 2U);
    EXPECT_EQ(calls, 1);
    EXPECT_GT(vector->GetTimestamp(), made);
    vector->Add({});
    EXPECT_EQ(calls, 1);
}

TEST(Vector, IsReplacedByData) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 1.0}, {"", 2.0}, {"", 3.0}});
    auto const old = vector->Find(0);
    auto const changed = json::Stage(*vector, R"({"numbers": [4, 5.5]})");
    ASSERT_EQ(changed.size(), 1U);
    EXPECT_EQ(changed[0], vector);
    EXPECT_EQ(vector->GetSize(), 3U);
    vector->Commit();
    EXPECT_EQ(json::Data(*vector), R"({"numbers": [4.0,5.5]})");
    EXPECT_EQ(vector->Find(1)->GetPath(), "numbers[1]");
    EXPECT_EQ(old->GetParent(), nullptr);
    json::Stage(*vector, R"({"numbers": []})");
    vector->Commit();
    EXPECT_EQ(vector->GetSize(), 0U);
}

TEST(Vector, FiresOnceForACommitThatReplacedIt) {
    auto const vector = MakeNumbers();
    int calls = 0;
    auto const binding = vector->Bind([&](auto const&) { ++calls; });
    json::Stage(*vector, R"({"numbers": [4]})");
    vector->Commit();
    EXPECT_EQ(calls, 0);
    vector->Fire();
    EXPECT_EQ(calls, 1);
}

TEST(Vector, SkipsDataThatEqualsItsElements) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 1.0}, {"", 2.0}});
    EXPECT_TRUE(json::Stage(*vector, R"({"numbers": [1, 2]})").empty());
    EXPECT_EQ(json::Stage(*vector, R"({"numbers": [2, 1]})").size(), 1U);
    vector->Discard();
    vector->Commit();
    EXPECT_EQ(json::Data(*vector), R"({"numbers": [1.0,2.0]})");
}

TEST(Vector, RefusesDataThatIsNotAllowed) {
    auto const vector = MakeNumbers();
    EXPECT_EQ(MessageOf<std::out_of_range>([&] { json::Stage(*vector, R"({"numbers": [1, 11]})"); }),
              "numbers[1]: the value 11 is out of the range 0 to 10");
    EXPECT_EQ(MessageOf<cereal::Exception>([&] { json::Stage(*vector, R"({"numbers": [1, "2"]})"); }),
              "numbers[1]: expected a number, found the text '2'");
    EXPECT_EQ(MessageOf<cereal::Exception>([&] { json::Stage(*vector, R"({"numbers": 1})"); }),
              "numbers: expected a list, found the number 1");
    EXPECT_EQ(MessageOf<cereal::Exception>([&] { json::Stage(*vector, R"({"numbers": {"a": 1}})"); }),
              "numbers: expected a list, found an object");
    EXPECT_EQ(MessageOf<cereal::Exception>([&] { json::Stage(*vector, R"({})"); }),
              "numbers: JSON Parsing failed - provided NVP (numbers) not found");
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Vector::Make("any"), R"({"any": [1, null]})"); }),
              "any[1]: expected a value, found null");
    EXPECT_EQ(MessageOf<cereal::Exception>([] { json::Stage(*Vector::Make("any"), R"({"any": [[]]})"); }),
              "any[0]: expected a value, found a list");
    EXPECT_EQ(vector->GetSize(), 0U);
    vector->Commit();
    EXPECT_EQ(vector->GetSize(), 0U);
}

TEST(Vector, WithoutATypeReadsDataAsItComes) {
    auto const vector = Vector::Make("any");
    json::Stage(*vector, R"({"any": ["a", true, -3, 2.5]})");
    vector->Commit();
    EXPECT_EQ(json::Data(*vector), R"({"any": ["a",true,-3,2.5]})");
    EXPECT_TRUE(vector->Find(0)->Is<Primitive<std::string>>());
    EXPECT_TRUE(vector->Find(1)->Is<Primitive<bool>>());
    EXPECT_TRUE(vector->Find(2)->Is<Primitive<std::int64_t>>());
    EXPECT_TRUE(vector->Find(3)->Is<Primitive<double>>());
}

TEST(Vector, KeepsToItsOptions) {
    auto const readOnly = MakeNumbers({Option::ReadOnly});
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Stage(*readOnly, R"({"numbers": [1]})"); }),
              "numbers: the configuration value is dil read only");
    readOnly->Add({{"", 1.0}});
    EXPECT_EQ(readOnly->GetSize(), 1U);
    auto const writeOnly = MakeNumbers({Option::WriteOnly});
    EXPECT_EQ(MessageOf<std::logic_error>([&] { json::Data(*writeOnly); }),
              "numbers: the configuration value is write only");
}

TEST(Vector, HasAnEmptyDefault) {
    auto const vector = MakeNumbers();
    vector->Add({{"", 2.0}});
    EXPECT_EQ(json::Defaults(*vector), R"({"numbers": []})");
}

TEST(Vector, DescribesItsElementsInItsSchema) {
    EXPECT_EQ(json::Schema(*MakeNumbers({Option::ReadOnly})),
              R"({"type": "array","items": {"description": "A number","type": "number","default": 1.0,)"
              R"("minimum": 0,"maximum": 10,"readOnly": true},"readOnly": true})");
    EXPECT_EQ(json::Schema(*Vector::Make("any")), R"({"type": "array","items": {}})");
}

}  // namespace
}  // namespace qel::configuration::node
