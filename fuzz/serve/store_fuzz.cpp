// A configuration's file from anywhere, and patches of it behind it, each after a byte 0: whatever they are, a patch is
// refused with a fault and changes nothing, or leads to a state whose values their nodes allow, and which is found
// again.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/system/system_error.hpp>

#include "check.hpp"
#include "qel/configuration/json.hpp"
#include "qel/configuration/node/map.hpp"
#include "qel/logging/configure.hpp"
#include "read_json.hpp"
#include "runtime.hpp"
#include "store.hpp"
#include "support/temporary_directory.hpp"

namespace {

namespace json = boost::json;
using qel::configuration::node::Map;
using qel::fuzz::Check;
using qel::serve::Store;

struct Opened {
    explicit Opened(std::string const& file) : store(runtime, file) {}

    qel::host::Runtime runtime;
    Store store;
};

std::vector<std::string> Split(std::string_view bytes) {
    std::vector<std::string> parts;
    for (std::size_t end; (end = bytes.find('\0')) != std::string_view::npos; bytes.remove_prefix(end + 1)) {
        parts.emplace_back(bytes.substr(0, end));
    }
    parts.emplace_back(bytes);
    return parts;
}

std::optional<json::object> ParsePatch(std::string const& text) {
    try {
        json::value value = qel::serve::ReadJson(text);
        if (value.is_object()) return value.get_object();
    } catch (boost::system::system_error const&) {
        // no JSON: nothing that reaches a store
    }
    return std::nullopt;
}

/// Whether the nodes of all settings take the values that they are said to have, as the ones that they have.
void CheckValues(Opened& opened) {
    std::vector<std::shared_ptr<Map>> maps{
        opened.runtime.FindConfiguration(qel::hash::MurmurThree32("test.Threshold"))};
    for (auto const& stream : opened.store.GetStreams()) {
        for (auto const& [name, map] : stream.settings) maps.push_back(map);
    }
    for (auto const& map : maps) {
        Check(qel::configuration::json::Stage(*map, qel::configuration::json::Data(*map)).empty(),
              "a value is another");
    }
    Check(opened.store.GetSchema("").has_value(), "there is no schema");
    auto const data = ParsePatch(opened.store.GetData("").value_or(""));
    Check(data && data->contains("streams") && data->contains("algorithms"), "the data is no JSON");
    Check(data->at("streams").as_object().size() == opened.store.GetStreams().size(), "a stream is missing");
}

void Change(Store& store, json::object const& patch) {
    auto const document = store.GetDocument();
    auto const data = store.GetData("");
    try {
        bool const isChanged = !store.Patch(patch).empty();
        Check(isChanged == (store.GetData("") != data), "the paths do not tell whether something has changed");
    } catch (qel::serve::Refused const& refused) {
        Check(!refused.GetFaults().empty(), "refused for no reason");
        Check(store.GetDocument() == document && store.GetData("") == data, "a refused patch has changed something");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    qel::logging::Configure("off");
    // In memory, where there is a folder: every change is synced.
    static std::filesystem::path const memory = "/dev/shm";
    static qel::test::TemporaryDirectory const directory(
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path());
    std::string const file = directory / "config.json";
    std::filesystem::remove(file + ".last-good");
    std::vector<std::string> const parts = Split({reinterpret_cast<char const*>(data), size});
    qel::test::WriteFile(file, parts.front());
    auto opened = std::make_unique<Opened>(file);
    CheckValues(*opened);
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (auto const patch = ParsePatch(parts[i])) Change(opened->store, *patch);
        CheckValues(*opened);
    }
    if (opened->store.GetSafeModeReason()) return 0;
    auto const document = opened->store.GetDocument();
    // Nodes stand in the order in which they were made, which is not that of the file.
    auto const values = ParsePatch(opened->store.GetData("").value());
    auto const problems = opened->store.GetProblems();
    // The file is used by one store at a time.
    opened.reset();
    opened = std::make_unique<Opened>(file);
    Check(!opened->store.GetSafeModeReason(), "what was saved cannot be used");
    Check(opened->store.GetDocument() == document, "another document is found again");
    Check(ParsePatch(opened->store.GetData("").value()) == values, "other values are found again");
    Check(opened->store.GetProblems() == problems, "other problems are found again");
    return 0;
}
