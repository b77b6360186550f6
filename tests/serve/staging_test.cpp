#include "staging.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "read_json.hpp"

namespace qel::serve {
namespace {

using boost::json::object;
using configuration::Range;
using configuration::Schema;
using configuration::node::Map;
using configuration::node::Option;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

object Parse(std::string const& text) { return ReadJson(text).as_object(); }

/// A map of some settings, and one Staging.
class StagingTest : public testing::Test {
protected:
    StagingTest() {
        map_->Schema({Schema("level", "A level", 5, {}, Range{1, 9}), Schema("text", "A text", "none"),
                      Schema("below.deep", "Further down", 0.5),
                      Schema("measured", "What the program tells", 0, {Option::ReadOnly}),
                      Schema("gauged", "What it counts", 0, {Option::Gauge}),
                      Schema("fleeting", "What it makes", 0, {Option::Transient})});
        map_->Insert(configuration::node::Vector::Make("names", "Some names", {}, Schema("names[*]", "A name", "")));
        before_ = Data();
    }

    std::string Data() const { return configuration::json::Data(*map_); }

    /// Stages a document, as a whole map would be; the layers before are empty.
    void Stage(std::string const& first, std::string const& second = "{}") {
        object const now = Parse(first), inherited = Parse(second), none;
        staging_.Stage(*map_, "M", {&now, &inherited}, {&none, &none});
    }
    /// What is refused, as "path: reason".
    std::vector<std::string> Refusals() const {
        std::vector<std::string> refusals;
        try {
            staging_.Finish();
        } catch (Refused const& refused) {
            for (Fault const& fault : refused.GetFaults()) refusals.push_back(fault.path + ": " + fault.reason);
        }
        return refusals;
    }

    std::shared_ptr<Map> const map_ = Map::Make("M");
    std::string before_;
    Staging staging_;
};

TEST_F(StagingTest, StagesAndLeavesTheCommitToTheCaller) {
    Stage(R"({"level": 7, "below": {"deep": 2}, "names": ["a"]})");
    EXPECT_NO_THROW(staging_.Finish());
    EXPECT_EQ(Data(), before_);
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M.level", "M.below.deep", "M.names"));
    map_->Commit();
    EXPECT_EQ(Data(), R"({"level": 7,"text": "none","below": {"deep": 2.0},"measured": 0,"gauged": 0,"fleeting": 0,)"
                      R"("names": ["a"]})");
}

TEST_F(StagingTest, TakesTheFirstLayerThatHasAValueAndTheDefaultWhereNoneHas) {
    map_->Set("text", "set");
    object const own = Parse(R"({"level": 2})"), common = Parse(R"({"level": 3, "below": {"deep": 4}})");
    object const before = Parse(R"({"text": "set"})");
    staging_.Stage(*map_, "M", {&own, &common}, {&before, nullptr});
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M.level", "M.text", "M.below.deep"));
    map_->Commit();
    EXPECT_THAT(Data(), StartsWith(R"({"level": 2,"text": "none","below": {"deep": 4.0})"));
}

TEST_F(StagingTest, LeavesAloneWhatNoLayerHasChanged) {
    map_->Set("level", 8);
    object const same = Parse(R"({"level": 7})"), common = Parse(R"({"text": "x"})");
    staging_.Stage(*map_, "M", {&same, &common}, {&same, &common});
    EXPECT_THAT(staging_.TakeChanged(), IsEmpty());
    map_->Commit();
    EXPECT_THAT(Data(), StartsWith(R"({"level": 8,"text": "none")"));
}

TEST_F(StagingTest, TellsNothingOfAValueThatMovesBetweenLayersOrIsTheDefault) {
    object const none, seven = Parse(R"({"level": 7})"), five = Parse(R"({"level": 5})");
    map_->Set("level", 7);
    staging_.Stage(*map_, "M", {&none, &seven}, {&seven, &none});
    EXPECT_THAT(staging_.TakeChanged(), IsEmpty());
    map_->Set("level", 5);
    staging_.Stage(*map_, "M", {&five, nullptr}, {nullptr, nullptr});
    EXPECT_THAT(staging_.TakeChanged(), IsEmpty());
}

TEST_F(StagingTest, TellsNoValuesOfAMapThatIsNew) {
    object const now = Parse(R"({"level": 7})");
    staging_.StageNew(*map_, "M", {&now, nullptr});
    staging_.Tell("M");
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M"));
    map_->Commit();
    EXPECT_THAT(Data(), StartsWith(R"({"level": 7)"));
    // The next one is told of again.
    Stage(R"({"level": 8})");
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M.level"));
}

TEST_F(StagingTest, DoesNotLookAtTheMemberThatIsSkipped) {
    object const now = Parse(R"({"below": 5, "level": 6})"), none;
    staging_.Stage(*map_, "M", {&now, nullptr}, {&none, nullptr}, "below");
    EXPECT_THAT(Refusals(), IsEmpty());
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M.level"));
}

TEST_F(StagingTest, RefusesMembersThatNobodyKnowsWhereverTheyStand) {
    Stage(R"({"levle": 1, "below": {"depp": 2}})", R"({"unknown": 1})");
    EXPECT_THAT(Refusals(),
                ElementsAre("M.levle: there is no such setting; did you mean 'level'? (known: level, text, below, "
                            "measured, gauged, fleeting, names)",
                            "M.below.depp: there is no such setting; did you mean 'deep'? (known: deep)"));
}

TEST_F(StagingTest, SaysThatAMapHasNoSettingsAtAll) {
    auto const empty = Map::Make("E");
    object const now = Parse(R"({"x": 1})");
    staging_.Stage(*empty, "E", {&now, nullptr}, {});
    EXPECT_THAT(Refusals(), ElementsAre("E.x: there is no such setting, nor any other"));
}

TEST_F(StagingTest, GoesOnAfterAFaultAndTellsAllOfThemInOrder) {
    Stage(R"({"level": 10, "text": "new", "below": [], "names": ["a", 1]})");
    EXPECT_THAT(Refusals(), ElementsAre("M.level: the value 10 is out of the range 1 to 9",
                                        "M.below: expected an object, found a list",
                                        "M.names[1]: expected a text, found the number 1"));
    // What was right is staged all the same, for the caller to discard.
    EXPECT_THAT(staging_.TakeChanged(), ElementsAre("M.text"));
    map_->Discard();
    map_->Commit();
    EXPECT_EQ(Data(), before_);
}

TEST_F(StagingTest, TellsTheRangeOfNumbersThatTheTypeCannotHold) {
    Stage(R"({"level": 99999999999})");
    EXPECT_THAT(Refusals(), ElementsAre("M.level: the value 99999999999 is out of the range 1 to 9"));
}

TEST_F(StagingTest, TakesWholeNumbersHoweverTheyAreWritten) {
    Stage(R"({"level": 7.0})");
    EXPECT_THAT(Refusals(), IsEmpty());
    map_->Commit();
    EXPECT_THAT(Data(), StartsWith(R"({"level": 7,)"));
    Stage(R"({"level": 7.5})");
    EXPECT_THAT(Refusals(), SizeIs(1));
}

TEST_F(StagingTest, RefusesWhatOnlyTheProgramSets) {
    Stage(R"({"measured": 0, "gauged": 0, "fleeting": 0})");
    EXPECT_THAT(Refusals(), ElementsAre("M.measured: is read only", "M.gauged: is read only",
                                        "M.fleeting: is made by the program at each start and is not kept"));
}

TEST_F(StagingTest, LeavesWhatOnlyTheProgramSetsToTheMapThatItStandsIn) {
    Stage("{}", R"({"measured": 4, "gauged": 4, "fleeting": 4})");
    EXPECT_THAT(Refusals(), IsEmpty());
    EXPECT_THAT(staging_.TakeChanged(), IsEmpty());
}

TEST_F(StagingTest, TellsOfInheritedFaultsWhereNothingElseIsWrong) {
    Stage("{}", R"({"level": 10})");
    EXPECT_THAT(Refusals(), ElementsAre("M.level: the value 10 is out of the range 1 to 9"));
    staging_.Refuse("other", "is wrong");
    EXPECT_THAT(Refusals(), ElementsAre("other: is wrong"));
}

TEST_F(StagingTest, RefusesTextsThatAreTooLong) {
    std::string const most(Staging::MaximumText, 'x'), longer = most + "x";
    Stage(R"({"text": ")" + most + R"(", "names": [")" + most + R"("]})");
    EXPECT_THAT(Refusals(), IsEmpty());
    Stage(R"({"text": ")" + longer + R"(", "names": ["a", ")" + longer + R"("]})");
    EXPECT_THAT(Refusals(), ElementsAre("M.text: is a text of more than 65536 bytes",
                                        "M.names: is a text of more than 65536 bytes"));
}

TEST_F(StagingTest, TellsOfInheritedTextsThatAreTooLongWhereNothingElseIsWrong) {
    std::string const longer(Staging::MaximumText + 1, 'x');
    staging_.Refuse("algorithms.M.text", "is too long");
    Stage("{}", R"({"text": ")" + longer + R"("})");
    EXPECT_THAT(Refusals(), ElementsAre("algorithms.M.text: is too long"));
}

TEST_F(StagingTest, TellsOfAHundredFaultsAtMost) {
    std::string members;
    for (int i = 0; i < 150; ++i) members += (i == 0 ? "\"x" : ", \"x") + std::to_string(i) + "\": 1";
    Stage("{" + members + "}");
    EXPECT_THAT(Refusals(), SizeIs(Staging::MaximumFaults));
}

TEST(JoinPath, NamesWhatIsBelowTheRootWithoutADot) {
    EXPECT_EQ(JoinPath("", "streams"), "streams");
    EXPECT_EQ(JoinPath("streams", "gate"), "streams.gate");
}

TEST(DescribeJson, NamesTheKindAndWhereItIsShortTheValue) {
    EXPECT_EQ(DescribeJson(object()), "an object");
    EXPECT_EQ(DescribeJson(boost::json::array()), "a list");
    EXPECT_EQ(DescribeJson("x"), "the text 'x'");
    EXPECT_EQ(DescribeJson(2.5), "the number 2.5");
    EXPECT_EQ(DescribeJson(true), "true");
    EXPECT_EQ(DescribeJson(nullptr), "null");
}

TEST(FindObject, GivesTheMemberIfItIsOne) {
    object const parent = Parse(R"({"a": {"b": 1}, "c": 2})");
    EXPECT_EQ(FindObject(&parent, "a"), &parent.at("a").as_object());
    EXPECT_EQ(FindObject(&parent, "c"), nullptr);
    EXPECT_EQ(FindObject(&parent, "d"), nullptr);
    EXPECT_EQ(FindObject(nullptr, "a"), nullptr);
}

TEST(GetObject, RefusesAMemberThatIsNone) {
    object const parent = Parse(R"({"a": {}, "c": 2})");
    Staging staging;
    EXPECT_EQ(GetObject(&parent, "a", "p.a", staging), &parent.at("a").as_object());
    EXPECT_EQ(GetObject(&parent, "d", "p.d", staging), nullptr);
    EXPECT_EQ(GetObject(nullptr, "a", "p.a", staging), nullptr);
    EXPECT_NO_THROW(staging.Finish());
    EXPECT_EQ(GetObject(&parent, "c", "p.c", staging), nullptr);
    EXPECT_THROW(staging.Finish(), Refused);
}

}  // namespace
}  // namespace qel::serve
