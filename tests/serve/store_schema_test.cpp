#include <gmock/gmock.h>

#include "store_fixture.hpp"
#include "support/process.hpp"

namespace qel::serve {
namespace {

using boost::json::value;
using testing::HasSubstr;

/// Checks schemas against the rules of 2020-12, and a document against one of them, with a library that is not ours.
constexpr char const* Check = R"(
import json, sys
from jsonschema import Draft202012Validator
schema, data = (json.load(open(name)) for name in sys.argv[1:])
Draft202012Validator.check_schema(schema)
assert schema["$schema"] == Draft202012Validator.META_SCHEMA["$schema"]
for error in Draft202012Validator(schema).iter_errors(data):
    print(".".join(map(str, error.path)), error.message)
)";

class StoreSchema : public StoreTest {
protected:
    StoreSchema() { OpenWith(Gate); }

    value Schema(std::string const& path) { return ReadJson(store_->GetSchema(path).value_or("null")); }

    /// What is wrong with data as the schema at a path has it; empty when nothing is.
    std::string Validate(std::string const& path, std::string const& data) {
        test::WriteFile(directory_ / "schema.json", store_->GetSchema(path).value());
        test::WriteFile(directory_ / "data.json", data);
        auto const outcome =
            test::RunProcess({.program = "/usr/bin/python3",
                              .arguments = {"-c", Check, directory_ / "schema.json", directory_ / "data.json"}});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return outcome.output;
    }
};

TEST_F(StoreSchema, IsOneOfTheDraftThatItNames) {
    Patch(R"({"streams": {"door": {"source": "d", "algorithms": ["test.Sample"]}}})");
    for (char const* const path : {"", "streams", "streams.gate", "algorithms", "streams.gate.algorithms",
                                   "streams.gate.settings.Threshold.threshold", "algorithms.info"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(Validate(path, Data(path)), "");
    }
    EXPECT_EQ(store_->GetSchema("streams.hall"), std::nullopt);
    EXPECT_EQ(store_->GetSchema("stream"), std::nullopt);
}

TEST_F(StoreSchema, TellsWhatTheNodesAllow) {
    EXPECT_EQ(Schema("streams.gate.settings.Threshold.threshold"), ReadJson(R"({
        "$schema": "https://json-schema.org/draft/2020-12/schema",
        "type": "integer", "default": 200, "minimum": 1, "maximum": 250})"));
    value const threshold = Schema("")
                                .at("properties")
                                .at("streams")
                                .at("properties")
                                .at("gate")
                                .at("properties")
                                .at("settings")
                                .at("properties")
                                .at("Threshold")
                                .at("properties");
    EXPECT_EQ(threshold.at("threshold").at("description"), "Smallest brightness of a pixel that counts");
    EXPECT_EQ(threshold.at("label").at("enum"), ReadJson(R"(["bright", "moving", "other"])"));
    EXPECT_EQ(threshold.at("confidence").at("maximum"), 1);
    EXPECT_EQ(threshold.at("enabled").at("type"), "boolean");
    EXPECT_EQ(Schema("streams.gate.algorithms").at("items").at("type"), "string");
    std::string const name = runtime_->GetRoot().Find("algorithms.Sample.byte") ? "Sample" : "test.Sample";
    EXPECT_EQ(Schema("algorithms." + name + ".measured").at("readOnly"), true);
    EXPECT_EQ(Schema("algorithms." + name + ".word").at("pattern"), "^[a-z]*$");
    EXPECT_EQ(Schema("algorithms.info").at("readOnly"), true);
}

TEST_F(StoreSchema, RefusesWhatTheStoreRefuses) {
    EXPECT_THAT(Validate("streams.gate", R"({"settings": {"Threshold": {"threshold": 300}}})"),
                HasSubstr("settings.Threshold.threshold 300 is greater than the maximum of 250"));
    EXPECT_THAT(Validate("streams.gate", R"({"loop": "yes"})"), HasSubstr("loop 'yes' is not of type 'boolean'"));
    EXPECT_THAT(Validate("streams.gate", R"({"settings": {"Threshold": {"label": "x"}}})"),
                HasSubstr("'x' is not one of ['bright', 'moving', 'other']"));
}

TEST_F(StoreSchema, TellsWhatANewStreamMayHold) {
    for (std::string const path : {"", "streams"}) {
        auto const wrap = [&](std::string const& streams) {
            return path.empty() ? R"({"streams": )" + streams + "}" : streams;
        };
        EXPECT_EQ(Validate(path, wrap(R"({"door": {"source": "d", "algorithms": ["invert"], "loop": true}})")), "");
        EXPECT_THAT(Validate(path, wrap(R"({"door": {"algorithms": ["invert"]}})")),
                    HasSubstr("'source' is a required property"));
        EXPECT_THAT(Validate(path, wrap(R"({"door": {"source": "d", "algorithms": "invert"}})")),
                    HasSubstr("'invert' is not of type 'array'"));
        EXPECT_THAT(Validate(path, wrap(R"({"a door": {"source": "d", "algorithms": ["invert"]}})")),
                    HasSubstr("'a door' does not match"));
    }
}

}  // namespace
}  // namespace qel::serve
