#include "preparation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qel/configuration/json.hpp"
#include "read_json.hpp"

namespace qel::serve {
namespace {

using boost::json::object;
using configuration::node::Map;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

object Parse(std::string const& text) { return ReadJson(text).as_object(); }

/// The text of a document with these streams.
std::string Streams(std::string const& streams) { return R"({"streams": )" + streams + "}"; }

/// Preparations on a tree with the stream "gate".
class PreparationTest : public testing::Test {
protected:
    using Plan = ConfigTree::Plan;

    PreparationTest() {
        runtime_.GetRoot().Insert(streams_);
        Apply(Prepare(Parse(Gate), {}));
    }

    Plan Prepare(object const& next, object const& current) { return Prepare(next, current, current); }
    Plan Prepare(object const& next, object const& current, object const& known) {
        return ConfigTree::Preparation(runtime_, table_, streams_, {next, current, known}).Run();
    }
    /// From the one stream to a document.
    Plan PrepareFromGate(std::string const& next) { return Prepare(Parse(next), Parse(Gate)); }

    static void Apply(Plan const& plan) {
        for (auto const& exchange : plan.exchanges) {
            for (auto const& node : exchange.added) node->Commit();
            exchange.map->Exchange(exchange.removed, exchange.added);
        }
    }
    /// What is refused, as "path: reason", after a check that no node has come or gone, nor changed its value.
    std::vector<std::string> RefusalOf(object const& next, object const& known) {
        std::string const before = Data();
        std::vector<std::string> refusals;
        try {
            (void)Prepare(next, Parse(Gate), known);
            ADD_FAILURE() << "taken";
        } catch (Refused const& refused) {
            for (Fault const& fault : refused.GetFaults()) refusals.push_back(fault.path + ": " + fault.reason);
        }
        EXPECT_EQ(Data(), before);
        runtime_.GetRoot().Discard();
        runtime_.GetRoot().Commit();
        EXPECT_EQ(Data(), before) << "discarded";
        return refusals;
    }
    std::vector<std::string> RefusalOf(std::string const& next) { return RefusalOf(Parse(next), Parse(Gate)); }
    /// The same of one more stream.
    std::vector<std::string> RefusalOfStream(std::string const& members) {
        return RefusalOf(
            Streams(R"({"gate": {"source": "g", "algorithms": ["threshold"]}, "door": {)" + members + "}}"));
    }

    std::string Data() { return configuration::json::Data(runtime_.GetRoot()); }
    static std::vector<std::string> NamesOf(std::vector<std::shared_ptr<configuration::Node>> const& nodes) {
        std::vector<std::string> names;
        for (auto const& node : nodes) names.push_back(node->GetName());
        return names;
    }

    static constexpr char const* Gate = R"({"streams": {"gate": {"source": "g", "algorithms": ["threshold"]}}})";

    host::Runtime runtime_;
    AlgorithmTable const table_{runtime_};
    std::shared_ptr<Map> const streams_ = Map::Make("streams");
};

TEST_F(PreparationTest, PlansNothingForTheSameDocument) {
    Plan const plan = PrepareFromGate(Gate);
    EXPECT_THAT(plan.changed, IsEmpty());
    EXPECT_THAT(plan.problems, IsEmpty());
    for (auto const& exchange : plan.exchanges) {
        EXPECT_THAT(exchange.added, IsEmpty());
        EXPECT_THAT(exchange.removed, IsEmpty());
    }
}

TEST_F(PreparationTest, PlansNewStreamsWithTheirSettingsAndTouchesNoNodeThatIsThere) {
    std::string const before = Data();
    Plan const plan = PrepareFromGate(Streams(R"({"gate": {"source": "g", "algorithms": ["threshold"]},
                    "door": {"source": "d", "loop": true, "algorithms": ["invert", "threshold"],
                             "settings": {"Threshold": {"threshold": 7}}}})"));
    EXPECT_EQ(Data(), before);
    EXPECT_THAT(plan.changed, ElementsAre("streams.door"));
    ASSERT_EQ(plan.exchanges.size(), 3U);
    EXPECT_EQ(plan.exchanges[0].map, streams_);
    EXPECT_THAT(NamesOf(plan.exchanges[0].added), ElementsAre("door"));
    // The settings of each stream, in the order of the document and of their algorithms.
    EXPECT_THAT(NamesOf(plan.exchanges[1].added), IsEmpty());
    EXPECT_THAT(NamesOf(plan.exchanges[2].added), ElementsAre("Invert", "Threshold"));
    Apply(plan);
    EXPECT_THAT(Data(), HasSubstr(R"("door": {"source": "d","loop": true,"enabled": true,"algorithms": )"
                                  R"(["invert","threshold"],"calibration": "","settings": {"Invert": {},)"
                                  R"("Threshold": {"threshold": 7,)"));
}

TEST_F(PreparationTest, TellsOfWhatGoesBeforeWhatChangesAndComes) {
    Plan const plan = PrepareFromGate(R"({"algorithms": {"Threshold": {"threshold": 9}},
                                          "streams": {"door": {"source": "d", "algorithms": ["invert"]}}})");
    EXPECT_THAT(plan.changed, ElementsAre("streams.gate", "algorithms.Threshold.threshold", "streams.door"));
    EXPECT_THAT(plan.exchanges.front().removed, ElementsAre("gate"));
}

TEST_F(PreparationTest, ExchangesTheSettingsOfAlgorithmsThatComeAndGo) {
    Plan const plan = PrepareFromGate(Streams(R"({"gate": {"source": "g", "algorithms": ["invert"]}})"));
    EXPECT_THAT(plan.changed, ElementsAre("streams.gate.algorithms", "streams.gate.settings.Threshold",
                                          "streams.gate.settings.Invert"));
    ASSERT_EQ(plan.exchanges.size(), 2U);
    EXPECT_EQ(plan.exchanges[1].map, runtime_.GetRoot().Find("streams.gate.settings"));
    EXPECT_THAT(plan.exchanges[1].removed, ElementsAre("Threshold"));
    EXPECT_THAT(NamesOf(plan.exchanges[1].added), ElementsAre("Invert"));
}

TEST_F(PreparationTest, HasNewSettingsBeginWithThoseOfTheAlgorithm) {
    Plan const plan = PrepareFromGate(R"({"algorithms": {"Threshold": {"threshold": 9}},
                                          "streams": {"door": {"source": "d", "algorithms": ["threshold"]}}})");
    Apply(plan);
    EXPECT_THAT(configuration::json::Data(*runtime_.GetRoot().Find("streams.door.settings.Threshold")),
                StartsWith(R"({"threshold": 9,)"));
}

TEST_F(PreparationTest, KeepsAsProblemsWhatTheKnownDocumentNamesAndNobodyKnows) {
    object const gone = Parse(R"({"streams": {"gate": {"source": "g", "algorithms": ["gone", "threshold"],
                                                       "settings": {"Gone": {"x": 1}}}},
                                  "algorithms": {"Gone": {"y": 2}}})");
    auto const problems = Prepare(gone, Parse(Gate), gone).problems;
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].path, "algorithms.Gone");
    EXPECT_EQ(problems[1].path, "streams.gate.algorithms[0]");
    EXPECT_EQ(problems[2].path, "streams.gate.settings.Gone");
    for (Fault const& problem : problems) EXPECT_THAT(problem.reason, StartsWith("there is no algorithm '"));
    runtime_.GetRoot().Discard();
    // Changed, or in another place, it is as wrong as any.
    object const other = Parse(R"({"streams": {"gate": {"source": "g", "algorithms": ["threshold"],
                                                        "settings": {"Gone": {"x": 2}}},
                                               "door": {"source": "d", "algorithms": ["gone"]}},
                                   "algorithms": {"Gone": {"y": 3}}})");
    EXPECT_THAT(RefusalOf(other, gone), ElementsAre(StartsWith("algorithms.Gone: there is no algorithm 'Gone'"),
                                                    StartsWith("streams.gate.settings.Gone: there is no algorithm"),
                                                    StartsWith("streams.door.algorithms[0]: there is no algorithm")));
}

TEST_F(PreparationTest, RefusesMembersThatADocumentDoesNotHave) {
    EXPECT_THAT(
        RefusalOf(R"({"stream": {}, "streams": [], "algorithms": 5})"),
        ElementsAre("stream: there is no such member; a configuration has 'streams' and 'algorithms'",
                    "algorithms: expected an object, found the number 5", "streams: expected an object, found a list"));
    EXPECT_THAT(RefusalOf(R"({"algorithms": {"info": {}}})"), ElementsAre("algorithms.info: is read only"));
}

TEST_F(PreparationTest, RefusesIdsThatAreNone) {
    std::string const longest(64, 'i');
    for (std::string const& id : {std::string("a b"), std::string("a.b"), std::string(), longest + "i"}) {
        EXPECT_THAT(RefusalOf(Streams("{\"" + id + R"(": {"source": "g", "algorithms": ["threshold"]}})")),
                    ElementsAre("streams." + id + ": an id is made of 1 to 64 letters, digits, '_' and '-'"));
    }
    EXPECT_THAT(
        PrepareFromGate(Streams("{\"" + longest + R"(": {"source": "g", "algorithms": ["threshold"]}})")).changed,
        ElementsAre("streams.gate", "streams." + longest));
}

TEST_F(PreparationTest, RefusesSourcesThatNobodyCanOpen) {
    std::string const list = R"("algorithms": ["threshold"])", most(ConfigTree::MaximumLocation, 'x');
    EXPECT_THAT(RefusalOfStream(list),
                ElementsAre("streams.door.source: is missing: a file, or a URI such as rtsp://camera/stream"));
    EXPECT_THAT(RefusalOfStream(R"("source": "", )" + list),
                ElementsAre("streams.door.source: is empty; write a file, or a URI such as rtsp://camera/stream"));
    EXPECT_THAT(RefusalOfStream(R"("source": "a\nb", "calibration": "\u0001", )" + list),
                ElementsAre("streams.door.source: holds a control character",
                            "streams.door.calibration: holds a control character"));
    EXPECT_THAT(RefusalOfStream(R"("source": ")" + most + R"(x", )" + list),
                ElementsAre("streams.door.source: is longer than 4096 bytes"));
    EXPECT_THAT(RefusalOfStream(R"("source": 5, )" + list),
                ElementsAre("streams.door.source: expected a text, found the number 5"));
}

TEST_F(PreparationTest, RefusesListsOfAlgorithmsThatCannotRun) {
    std::string const source = R"("source": "d", )";
    EXPECT_THAT(RefusalOfStream(R"("source": "d")"),
                ElementsAre("streams.door.algorithms: is missing: the names of one or more algorithms"));
    EXPECT_THAT(RefusalOfStream(source + R"("algorithms": [])"),
                ElementsAre("streams.door.algorithms: is empty; name one or more algorithms"));
    EXPECT_THAT(RefusalOfStream(source + R"("algorithms": ["threshold", "invert", "test.Threshold"])"),
                ElementsAre("streams.door.algorithms[2]: the algorithm 'test.Threshold' is named twice"));
    std::string many;
    for (std::size_t i = 0; i <= ConfigTree::MaximumAlgorithms; ++i) many += i == 0 ? R"("invert")" : R"(, "invert")";
    EXPECT_THAT(RefusalOfStream(source + R"("algorithms": [)" + many + "]"),
                ElementsAre("streams.door.algorithms: names more than 16 algorithms"));
}

TEST_F(PreparationTest, RefusesMoreStreamsThanCanRunAndLooksAtNoneOfThem) {
    std::string streams;
    for (std::size_t i = 0; i <= ConfigTree::MaximumStreams; ++i) {
        streams += (i == 0 ? "\"s" : ", \"s") + std::to_string(i) + "\": 5";
    }
    EXPECT_THAT(RefusalOf(Streams("{" + streams + "}")), ElementsAre("streams: has 257 streams; at most 256 can run"));
}

TEST_F(PreparationTest, RefusesAnAlgorithmThatCannotMakeItsSettings) {
    auto const refusals = RefusalOfStream(R"("source": "d", "algorithms": ["threshold", "twisted"])");
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_THAT(refusals.front(), StartsWith("streams.door."));
}

TEST_F(PreparationTest, RefusesAsAWholeHoweverMuchIsRight) {
    EXPECT_THAT(RefusalOf(R"({"algorithms": {"Threshold": {"threshold": 9}},
                              "streams": {"gate": {"source": "new", "algorithms": ["invert"], "loop": 1},
                                          "door": {"source": "d", "algorithms": ["threshold"]}}})"),
                ElementsAre("streams.gate.loop: expected true or false, found the number 1"));
    EXPECT_EQ(runtime_.GetRoot().Find("streams.door"), nullptr);
    EXPECT_NE(runtime_.GetRoot().Find("streams.gate.settings.Threshold"), nullptr);
    // The next one is prepared as if nothing had been.
    EXPECT_THAT(PrepareFromGate(Gate).changed, IsEmpty());
}

}  // namespace
}  // namespace qel::serve
