#include "preparation.hpp"

#include <algorithm>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include <boost/json.hpp>

namespace qel::serve {
namespace {

namespace json = boost::json;

bool IsId(std::string_view text) {
    constexpr std::size_t Longest = 64;
    auto const isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    };
    return !text.empty() && text.size() <= Longest && std::all_of(text.begin(), text.end(), isAllowed);
}

bool HasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

bool IsSame(json::object const* left, json::object const* right, std::string_view name) {
    auto const* const one = left == nullptr ? nullptr : left->if_contains(name);
    auto const* const other = right == nullptr ? nullptr : right->if_contains(name);
    return one != nullptr && other != nullptr && *one == *other;
}

}  // namespace

ConfigTree::Preparation::Preparation(host::Runtime& runtime, AlgorithmTable const& table,
                                     std::shared_ptr<configuration::node::Map> const& streams,
                                     Documents const& documents)
    : runtime_(runtime),
      table_(table),
      streams_(streams),
      documents_(documents),
      currentAlgorithms_(FindObject(&documents.current, "algorithms")) {}

ConfigTree::Plan ConfigTree::Preparation::Run() {
    for (auto const& member : documents_.next) {
        if (member.key() == "streams" || member.key() == "algorithms") continue;
        staging_.Refuse(member.key(), "there is no such member; a configuration has 'streams' and 'algorithms'");
    }
    algorithms_ = GetObject(&documents_.next, "algorithms", "algorithms", staging_);
    StageAlgorithms();
    StageStreams();
    staging_.Finish();
    auto changed = staging_.TakeChanged();
    plan_.changed.insert(plan_.changed.end(), changed.begin(), changed.end());
    return std::move(plan_);
}

void ConfigTree::Preparation::StageAlgorithms() {
    for (Entry const& entry : table_.GetEntries()) {
        std::string const path = "algorithms." + entry.name;
        staging_.Stage(*entry.common, path, {GetObject(algorithms_, entry.name, path, staging_), nullptr},
                       {FindObject(currentAlgorithms_, entry.name), nullptr});
    }
    if (algorithms_ == nullptr) return;
    auto const* const known = FindObject(&documents_.known, "algorithms");
    for (auto const& member : *algorithms_) {
        std::string_view const name = member.key();
        if (table_.FindByName(name) != nullptr) continue;
        std::string const path = JoinPath("algorithms", name);
        if (name == "info") {
            staging_.Refuse(path, "is read only");
        } else {
            KeepOrRefuse(path, name, IsSame(algorithms_, known, name));
        }
    }
}

void ConfigTree::Preparation::KeepOrRefuse(std::string const& path, std::string_view name, bool isKnown) {
    if (!isKnown) return staging_.Refuse(path, table_.ExplainUnknown(name));
    plan_.problems.push_back({path, table_.ExplainUnknown(name)});
}

void ConfigTree::Preparation::StageStreams() {
    json::object static const none;
    auto const* const given = GetObject(&documents_.next, "streams", "streams", staging_);
    json::object const& streams = given == nullptr ? none : *given;
    if (streams.size() > MaximumStreams) {
        staging_.Refuse("streams", "has " + std::to_string(streams.size()) + " streams; at most " +
                                       std::to_string(MaximumStreams) + " can run");
        return;
    }
    auto const* const current = FindObject(&documents_.current, "streams");
    auto const* const known = FindObject(&documents_.known, "streams");
    Plan::Exchange& exchange = plan_.exchanges.emplace_back(Plan::Exchange{streams_});
    for (auto const& child : streams_->GetChildren()) {
        if (streams.contains(child->GetName())) continue;
        plan_.changed.push_back("streams." + child->GetName());
        exchange.removed.push_back(child->GetName());
    }
    for (auto const& member : streams) {
        std::string const id = member.key();
        std::string const path = "streams." + id;
        if (!IsId(id)) {
            staging_.Refuse(path, "an id is made of 1 to 64 letters, digits, '_' and '-'");
        } else if (auto const* const stream = GetObject(&streams, id, path, staging_)) {
            StageStream(id, path, {stream, FindObject(current, id), FindObject(known, id)});
        }
    }
}

void ConfigTree::Preparation::StageStream(std::string const& id, std::string const& path, Parts const& parts) {
    CheckLocation(*parts.next, "source", path);
    CheckLocation(*parts.next, "calibration", path);
    std::vector<Entry const*> const listed = CheckList(parts, path);
    StreamNodes nodes = StreamNodes::Find(*streams_, id);
    bool const isNew = !nodes.map;
    if (isNew) {
        nodes = StreamNodes::Make(id);
        plan_.exchanges.front().added.push_back(nodes.map);
        staging_.Tell(path);
        staging_.StageNew(*nodes.map, path, {parts.next, nullptr}, "settings");
    } else {
        staging_.Stage(*nodes.map, path, {parts.next, nullptr}, {parts.current, nullptr}, "settings");
    }
    StageSettings(nodes, isNew, path + ".settings", parts, listed);
}

void ConfigTree::Preparation::StageSettings(StreamNodes const& nodes, bool isNew, std::string const& path,
                                            Parts const& parts, std::vector<Entry const*> const& listed) {
    auto const* const settings = GetObject(parts.next, "settings", path, staging_);
    auto const* const current = FindObject(parts.current, "settings");
    auto const* const known = FindObject(parts.known, "settings");
    // Those of an algorithm that is not listed are kept: it may be again.
    std::vector<Entry const*> wanted = listed;
    if (settings != nullptr) {
        for (auto const& member : *settings) {
            Entry const* const entry = table_.FindByName(member.key());
            if (entry == nullptr) {
                KeepOrRefuse(JoinPath(path, member.key()), member.key(), IsSame(settings, known, member.key()));
            } else if (std::find(wanted.begin(), wanted.end(), entry) == wanted.end()) {
                wanted.push_back(entry);
            }
        }
    }
    Plan::Exchange exchange{nodes.settings};
    for (auto const& child : nodes.settings->GetChildren()) {
        auto const isChild = [&](Entry const* entry) { return entry->name == child->GetName(); };
        if (std::any_of(wanted.begin(), wanted.end(), isChild)) continue;
        exchange.removed.push_back(child->GetName());
        staging_.Tell(JoinPath(path, child->GetName()));
    }
    for (Entry const* const entry : wanted) {
        std::string const& name = entry->name;
        std::string const below = JoinPath(path, name);
        Staging::Layers const layers{GetObject(settings, name, below, staging_), FindObject(algorithms_, name)};
        if (auto const map = StreamNodes::FindChild(*nodes.settings, name)) {
            staging_.Stage(*map, below, layers, {FindObject(current, name), FindObject(currentAlgorithms_, name)});
            continue;
        }
        try {
            auto const map = runtime_.MakeOwnConfiguration(entry->id);
            staging_.StageNew(*map, below, layers);
            exchange.added.push_back(map);
            if (!isNew) staging_.Tell(below);
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& error) {
            staging_.Refuse(below, std::string("the algorithm cannot be configured: ") + error.what());
        }
    }
    plan_.exchanges.push_back(std::move(exchange));
}

void ConfigTree::Preparation::CheckLocation(json::object const& stream, char const* name, std::string const& path) {
    bool const isNeeded = std::string_view(name) == "source";
    std::string const place = JoinPath(path, name);
    auto const* const value = stream.if_contains(name);
    if (value == nullptr) {
        if (isNeeded) staging_.Refuse(place, "is missing: a file, or a URI such as rtsp://camera/stream");
        return;
    }
    auto const* const text = value->if_string();
    if (text == nullptr) return;  // its node says what it should be
    if (isNeeded && text->empty())
        staging_.Refuse(place, "is empty; write a file, or a URI such as rtsp://camera/stream");
    if (text->size() > MaximumLocation) {
        staging_.Refuse(place, "is longer than " + std::to_string(MaximumLocation) + " bytes");
    }
    if (HasControlCharacter(*text)) staging_.Refuse(place, "holds a control character");
}

std::vector<AlgorithmTable::Entry const*> ConfigTree::Preparation::CheckList(Parts const& parts,
                                                                             std::string const& path) {
    std::vector<Entry const*> entries;
    std::string const place = path + ".algorithms";
    auto const* const value = parts.next->if_contains("algorithms");
    if (value == nullptr) {
        staging_.Refuse(place, "is missing: the names of one or more algorithms");
        return entries;
    }
    auto const* const list = value->if_array();
    if (list == nullptr) return entries;  // its node says what it should be
    if (list->empty()) staging_.Refuse(place, "is empty; name one or more algorithms");
    if (list->size() > MaximumAlgorithms) {
        staging_.Refuse(place, "names more than " + std::to_string(MaximumAlgorithms) + " algorithms");
        return entries;
    }
    std::vector<std::string_view> unknown;
    for (std::size_t i = 0; i < list->size(); ++i) {
        auto const* const text = (*list)[i].if_string();
        if (text == nullptr) continue;
        std::string_view const name(*text);
        std::string const element = place + "[" + std::to_string(i) + "]";
        Entry const* const entry = table_.FindByUse(name);
        bool const isTwice = entry != nullptr ? std::find(entries.begin(), entries.end(), entry) != entries.end()
                                              : std::find(unknown.begin(), unknown.end(), name) != unknown.end();
        if (isTwice) {
            staging_.Refuse(element, "the algorithm '" + std::string(name) + "' is named twice");
        } else if (entry == nullptr) {
            KeepOrRefuse(element, name, IsListed(parts.known, name));
            unknown.push_back(name);
        } else {
            entries.push_back(entry);
        }
    }
    return entries;
}

bool ConfigTree::Preparation::IsListed(json::object const* stream, std::string_view name) {
    auto const* const list = stream == nullptr ? nullptr : stream->if_contains("algorithms");
    if (list == nullptr || !list->is_array()) return false;
    auto const isName = [&](json::value const& element) { return element.is_string() && element.get_string() == name; };
    return std::any_of(list->get_array().begin(), list->get_array().end(), isName);
}

}  // namespace qel::serve
