#include <gmock/gmock.h>

#include "store_fixture.hpp"

namespace qel::serve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class StoreRefusal : public StoreTest {
protected:
    StoreRefusal() { OpenWith(Gate); }

    /// The faults of a patch of the stream.
    std::vector<std::string> InGate(std::string const& patch) {
        return RefusalOf(R"({"streams": {"gate": )" + patch + "}}");
    }
};

TEST_F(StoreRefusal, TellsWhatIsWrongWithASetting) {
    struct Case {
        char const* patch;
        char const* fault;
    };
    Case const cases[] = {
        {R"({"threshold": 251})", "threshold: the value 251 is out of the range 1 to 250"},
        {R"({"threshold": 1000})", "threshold: the value 1000 is out of the range 1 to 250"},
        {R"({"threshold": -1})", "threshold: the value -1 is out of the range 1 to 250"},
        {R"({"threshold": 18446744073709551615})",
         "threshold: the value 18446744073709551616 is out of the range 1 to 250"},
        {R"({"threshold": "20"})", "threshold: expected an unsigned integer, found the text '20'"},
        {R"({"threshold": 20.5})", "threshold: expected an unsigned integer, found the number 20.5"},
        {R"({"threshold": {}})", "threshold: expected an unsigned integer, found an object"},
        {R"({"confidence": true})", "confidence: expected a number, found true"},
        {R"({"confidence": 1.5})", "confidence: the value 1.5 is out of the range 0 to 1"},
        {R"({"enabled": 1})", "enabled: expected true or false, found the number 1"},
        {R"({"label": ["moving"]})", "label: expected a text, found a list"},
        {R"({"label": "blue"})", "label: the value 'blue' is not one of the choices 'bright', 'moving', 'other'"},
        {R"({"treshold": 20})",
         "treshold: there is no such setting; did you mean 'threshold'? (known: threshold, smallest_area, confidence, "
         "enabled, label)"},
        {R"({"label.x": 20})",
         "label.x: there is no such setting; did you mean 'label'? (known: threshold, smallest_area, confidence, "
         "enabled, label)"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.patch);
        std::string const patch(c.patch);
        EXPECT_THAT(InGate(R"({"settings": {"Threshold": )" + patch + "}}"),
                    ElementsAre("streams.gate.settings.Threshold." + std::string(c.fault)));
        EXPECT_THAT(RefusalOf(R"({"algorithms": {"Threshold": )" + patch + "}}"),
                    ElementsAre("algorithms.Threshold." + std::string(c.fault)))
            << "told once, although the stream follows it";
    }
}

TEST_F(StoreRefusal, TellsEverythingThatIsWrongAtOnce) {
    EXPECT_THAT(
        RefusalOf(R"({"streams": {"gate": {"source": 5, "algorithms": ["fial"], "colour": "red",
                                                   "settings": {"Threshold": {"threshold": 0, "enabled": 1}}},
                                          "a door": {}},
                              "algorithms": {"Thresold": {}, "info": {}, "Invert": []}, "version": 1})"),
        UnorderedElementsAre(
            "version: there is no such member; a configuration has 'streams' and 'algorithms'",
            "algorithms.Invert: expected an object, found a list", "algorithms.info: is read only",
            StartsWith("algorithms.Thresold: there is no algorithm 'Thresold'; did you mean 'Threshold'? (known: "),
            "streams.gate.source: expected a text, found the number 5",
            StartsWith("streams.gate.algorithms[0]: there is no algorithm 'fial'; did you mean 'Fail'? (known: "),
            "streams.gate.colour: there is no such setting; did you mean 'loop'? (known: source, loop, "
            "enabled, algorithms, calibration, settings)",
            "streams.gate.settings.Threshold.threshold: the value 0 is out of the range 1 to 250",
            "streams.gate.settings.Threshold.enabled: expected true or false, found the number 1",
            "streams.a door: an id is made of 1 to 64 letters, digits, '_' and '-'"));
}

TEST_F(StoreRefusal, TellsWhatIsWrongWithAStream) {
    struct Case {
        std::string patch;
        char const* fault;
    };
    Case const cases[] = {
        {R"({"source": null})", "source: is missing: a file, or a URI such as rtsp://camera/stream"},
        {R"({"source": ""})", "source: is empty; write a file, or a URI such as rtsp://camera/stream"},
        {R"({"source": "a\nb"})", "source: holds a control character"},
        {R"({"source": ")" + std::string(4097, 'x') + "\"}", "source: is longer than 4096 bytes"},
        {R"({"calibration": ")" + std::string(4097, 'x') + "\"}", "calibration: is longer than 4096 bytes"},
        {R"({"loop": "yes"})", "loop: expected true or false, found the text 'yes'"},
        {R"({"algorithms": null})", "algorithms: is missing: the names of one or more algorithms"},
        {R"({"algorithms": []})", "algorithms: is empty; name one or more algorithms"},
        {R"({"algorithms": "invert"})", "algorithms: expected a list, found the text 'invert'"},
        {R"({"algorithms": ["invert", 5]})", "algorithms[1]: expected a text, found the number 5"},
        {R"({"algorithms": ["invert", "fail", "Invert"]})", "algorithms[2]: the algorithm 'Invert' is named twice"},
        {R"({"algorithms": ["Twisted"]})", "settings.Twisted: the algorithm cannot be configured: no room"},
        {R"({"settings": []})", "settings: expected an object, found a list"},
        {R"({"settings": {"Threshold": 5}})", "settings.Threshold: expected an object, found the number 5"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.patch.substr(0, 100));
        EXPECT_THAT(InGate(c.patch), ElementsAre("streams.gate." + std::string(c.fault)));
    }
    EXPECT_THAT(InGate(R"({"algorithms": ["a","b","c","d","e","f","g","h","i","j","k","l","m","n","o","p","q"]})"),
                ElementsAre("streams.gate.algorithms: names more than 16 algorithms"));
    EXPECT_THAT(InGate(R"({"settings": {"threshold": {}}})"),
                ElementsAre(StartsWith("streams.gate.settings.threshold: there is no algorithm 'threshold'; did you "
                                       "mean 'Threshold'?")));
    EXPECT_THAT(InGate("5"), ElementsAre("streams.gate: expected an object, found the number 5"));
    for (std::string const id : {"", "a.b", "a b", "a/b", "\xc3\xa4"}) {
        EXPECT_THAT(RefusalOf(R"({"streams": {")" + id + R"(": {"source": "a", "algorithms": ["invert"]}}})"),
                    ElementsAre("streams." + id + ": an id is made of 1 to 64 letters, digits, '_' and '-'"));
    }
    EXPECT_THAT(RefusalOf(R"({"streams": {")" + std::string(65, 'x') + R"(": {}}})"),
                ElementsAre(HasSubstr("an id is made of 1 to 64 ")));
    EXPECT_THAT(RefusalOf(R"({"streams": 5})"), ElementsAre("streams: expected an object, found the number 5"));
    EXPECT_THAT(RefusalOf(R"({"algorithms": "all"})"),
                ElementsAre("algorithms: expected an object, found the text 'all'"));
}

TEST_F(StoreRefusal, KeepsWhatOnlyTheProgramMaySet) {
    std::string const name = runtime_->GetRoot().Find("algorithms.Sample.byte") ? "Sample" : "test.Sample";
    auto const refusal = [&](std::string const& settings) {
        return RefusalOf(R"({"algorithms": {")" + name + R"(": )" + settings + "}}");
    };
    std::string const path = "algorithms." + name + ".";
    EXPECT_THAT(refusal(R"({"measured": 1})"), ElementsAre(path + "measured: is read only"));
    EXPECT_THAT(refusal(R"({"gauged": 1})"), ElementsAre(path + "gauged: is read only"));
    EXPECT_THAT(refusal(R"({"fleeting": 1})"),
                ElementsAre(path + "fleeting: is made by the program at each start and is not kept"));
    EXPECT_THAT(refusal(R"({"word": "ABC"})"),
                ElementsAre(path + "word: the value 'ABC' does not match the pattern '^[a-z]*$'"));
    EXPECT_THAT(
        refusal(R"({"below": {"deep": "x", "shallow": 1}})"),
        UnorderedElementsAre(path + "below.deep: expected an integer, found the text 'x'",
                             path + "below.shallow: there is no such setting; did you mean 'deep'? (known: deep)"));
    EXPECT_THAT(refusal(R"({"below": 1})"), ElementsAre(path + "below: expected an object, found the number 1"));
    EXPECT_THAT(refusal(R"({"names": ["a", 1, 2]})"),
                ElementsAre(path + "names[1]: expected a text, found the number 1"));
    EXPECT_THAT(refusal(R"({"text": ")" + std::string(65537, 'x') + "\"}"),
                ElementsAre(path + "text: is a text of more than 65536 bytes"));
    EXPECT_THAT(refusal(R"({"names": ["a", ")" + std::string(65537, 'x') + "\"]}"),
                ElementsAre(path + "names: is a text of more than 65536 bytes"));
}

TEST_F(StoreRefusal, TakesNoMoreStreamsThanCanRun) {
    auto const streams = [](int first, int last) {
        std::string text;
        for (int i = first; i <= last; ++i) {
            text.append("\"s").append(std::to_string(i)).append(R"(": {"source": "a", "algorithms": ["invert"]}, )");
        }
        return R"({"streams": {)" + text + R"("last": {"source": "a", "algorithms": ["invert"]}}})";
    };
    EXPECT_THAT(Patch(streams(1, 254)), testing::SizeIs(255));
    EXPECT_THAT(RefusalOf(streams(1, 255)), ElementsAre("streams: has 257 streams; at most 256 can run"));
}

TEST_F(StoreRefusal, TellsAHundredFaultsAtMost) {
    std::string members;
    for (int i = 0; i < 500; ++i) members.append("\"x").append(std::to_string(i)).append("\": 1, ");
    EXPECT_THAT(RefusalOf("{" + members + R"("y": 1})"), testing::SizeIs(100));
}

TEST_F(StoreRefusal, TakesNoPatchThatNoFileCouldHold) {
    boost::json::object nul{{"streams", boost::json::object{{"gate", boost::json::object{{"source", "a"}}}}}};
    auto const refusal = [&](boost::json::object const& patch) -> std::string {
        try {
            store_->Patch(patch);
        } catch (Refused const& refused) {
            return refused.what();
        }
        return "taken";
    };
    auto& source = nul["streams"].as_object()["gate"].as_object()["source"];
    source = boost::json::string("a\0b", 3);
    EXPECT_EQ(refusal(nul), "streams.gate.source: holds the character U+0000");
    EXPECT_EQ(refusal({{boost::json::string("a\0b", 3), 1}}), "has a member with the character U+0000 in its name");
    EXPECT_EQ(refusal({{"a", std::numeric_limits<double>::infinity()}}), "a: is no finite number");
    boost::json::value deep = 1;
    for (int i = 0; i < 17; ++i) deep = boost::json::object{{"a", deep}};
    EXPECT_EQ(refusal(deep.as_object()), "a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a: is nested more than 16 deep");
    boost::json::object large;
    for (int i = 0; i < 200; ++i) large[std::to_string(i)] = std::string(50000, 'x');
    EXPECT_EQ(refusal(large), "the configuration would be larger than 8388608 bytes");
}

}  // namespace
}  // namespace qel::serve
