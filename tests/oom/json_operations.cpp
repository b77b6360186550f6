// JSON in and out: texts of the tree, checked documents, files.
#include <stdexcept>
#include <string>
#include <vector>

#include <cereal/archives/json.hpp>

#include "oom/sweep.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/dynamic_enum.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/configuration/node/primitive.hpp"
#include "qel/configuration/node/vector.hpp"
#include "qel/inference/metadata.hpp"
#include "qel/serialize/check_json.hpp"
#include "qel/serialize/json_error.hpp"
#include "qel/serialize/load_json_from_file.hpp"
#include "support/temporary_directory.hpp"

namespace qel::oom {
namespace {

using configuration::Schema;
using configuration::node::Map;
namespace json = configuration::json;

constexpr char Long[] = "a text that is too long to be kept without an allocation";

struct Tree {
    std::shared_ptr<Map> root = Map::Make("root");
    std::string text{};

    Tree() {
        root->Schema({Schema("inner.text", Long, Long), Schema("number", "", 3, {}, configuration::Range{0, 9}),
                      Schema("inner.deep.choice", "", "x", {}, {"x", "y"}), Schema("list[*]", Long, Long),
                      Schema("any[*]", ""), Schema("real", "", 0.25)});
    }
};

std::string TextOf(Tree const& tree) {
    auto const copy = json::Data(*tree.root);
    std::string staged;
    for (char const* path : {"inner.text", "number", "inner.deep.choice", "real"}) {
        bool const isStaged = tree.root->Find(path)->As<configuration::node::Value>().GetStaged() != nullptr;
        staged += isStaged ? " staged" : " -";
    }
    return tree.text + copy + staged;
}

template <class Act>
Operation OnTree(std::string name, Act act) {
    return MakeOperation(
        "json/" + name, Promise::Strong, [] { return Tree(); }, act, [](Tree const& s) { return TextOf(s); });
}

Operations TreeOperations() {
    return {
        OnTree("Data", [](Tree& t) { t.text = json::Data(*t.root); }),
        OnTree("DataOfOneNode", [](Tree& t) { t.text = json::Data(*t.root->Find("inner.text")); }),
        OnTree("DataOfAList", [](Tree& t) { t.text = json::Data(*t.root->Find("list")); }),
        OnTree("Defaults", [](Tree& t) { t.text = json::Defaults(*t.root); }),
        OnTree("Schema", [](Tree& t) { t.text = json::Schema(*t.root); }),
        OnTree("Stage",
               [](Tree& t) {
                   auto const staged = json::Stage(*t.root, R"({"number": 4, "list": ["a", "b", "c"], "real": 1.5,
                       "any": [1, 2.5, true, "text"], "inner": {"text": "a new text that needs room", "deep": {"choice":
                       "y"}}})");
                   t.text = std::to_string(staged.size());
               }),
        OnTree("StageRefused",
               [](Tree& t) {
                   t.text = Caught<cereal::Exception>([&] { json::Stage(*t.root, R"({"number": "many"})"); }) +
                            Caught<cereal::Exception>([&] { json::Stage(*t.root, R"({"nothing": 1})"); }) +
                            Caught<cereal::Exception>([&] { json::Stage(*t.root, R"({"list": {"a": [null]}})"); }) +
                            Caught<std::out_of_range>([&] { json::Stage(*t.root, R"({"number": 10})"); }) +
                            Caught<std::out_of_range>([&] { json::Stage(*t.root, R"({"number": 9999999999})"); }) +
                            Caught<serialize::JsonError>([&] { json::Stage(*t.root, R"({"number": )"); });
               }),
    };
}

struct File {
    test::TemporaryDirectory folder{};
    std::string path = folder / "metadata.json";
    inference::Metadata metadata{};
    std::string text{};

    explicit File(char const* json) { test::WriteFile(path, json); }
};

std::string FileText(std::unique_ptr<File> const& file) {
    return file->text + std::to_string(file->metadata.GetMaxBatchSize()) + file->metadata.GetVersion();
}

Operation OnFile(std::string name, char const* json) {
    return MakeOperation(
        "json/" + name, Promise::Strong, [json] { return std::make_unique<File>(json); },
        [](std::unique_ptr<File>& file) { cereal::utils::LoadJsonFromFile(file->path, file->metadata); }, FileText);
}

Operations FileOperations() {
    return {
        OnFile("LoadJsonFromFile", R"({"max_batch_size": 4, "backend_loading_priority": 7,
            "version": "a version that is too long to be kept without an allocation"})"),
        OnFile("LoadJsonFromFileInAnotherOrder", R"({"version": "a version that is too long to be kept in place",
            "more": [1, {"a": "b"}], "max_batch_size": 4})"),
        OnFile("LoadJsonFromFileWithoutVersion", R"({"max_batch_size": 4, "version": 7})"),
        MakeOperation(
            "json/LoadJsonFromFileRefused", Promise::Strong, [] { return std::make_unique<File>("{\"version\": 1}"); },
            [](std::unique_ptr<File>& file) {
                std::string said =
                    Caught<cereal::Exception>([&] { cereal::utils::LoadJsonFromFile(file->path, file->metadata); });
                said += Caught<cereal::Exception>(
                    [&] { cereal::utils::LoadJsonFromFile("/nowhere/at/all.json", file->metadata); });
                file->text.swap(said);
            },
            [](std::unique_ptr<File> const& file) {
                // The folder's name differs from attempt to attempt.
                return std::to_string(file->text.size());
            }),
        MakeOperation(
            "json/CheckJson", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                serialize::CheckJson(R"({"a": [1, 2.5, "text \u00e9", true, null], "b": {}})");
                std::string said = Caught<serialize::JsonError>([] { serialize::CheckJson("{\n\"a\": tru}"); });
                said += Caught<serialize::JsonError>([] { serialize::CheckJson("[[[[1]]]]", 3); });
                said += Caught<serialize::JsonError>([] { serialize::CheckJson("[\"\\u0000\"]"); });
                text = said;
            },
            [](std::string const& text) { return text; }),
        MakeOperation(
            "json/JsonInput", Promise::Strong, [] { return std::string(); },
            [](std::string& text) {
                serialize::JsonInput input(R"({"first": "a text that is too long to be kept in place", "second": 2})");
                std::string first;
                input.GetArchive()(cereal::make_nvp("first", first));
                text = first;
            },
            [](std::string const& text) { return text; }),
    };
}

}  // namespace

Operations JsonOperations() {
    Operations all = TreeOperations();
    for (Operation& operation : FileOperations()) all.push_back(std::move(operation));
    return all;
}

}  // namespace qel::oom
