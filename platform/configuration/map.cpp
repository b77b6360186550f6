#include "qel/configuration/node/map.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <stdexcept>

#include <cereal/archives/json.hpp>

#include "qel/configuration/node/vector.hpp"
#include "read_json.hpp"
#include "tree_lock.hpp"
#include "write_json.hpp"

namespace qel::configuration::node {

using detail::TreeLock;

namespace {

std::string Join(std::string const& path, std::string_view name) {
    return path.empty() ? std::string(name) : path + '.' + std::string(name);
}

void CheckType(Node const& node, std::string const& typeName) {
    if (node.GetTypeName() == typeName) return;
    throw std::invalid_argument(node.GetPath() + ": the schema describes a '" + typeName + "', the node is a '" +
                                node.GetTypeName() + "'");
}

}  // namespace

Map::Map(std::string name, std::string description, Options options, Timestamp timestamp, Predicate predicate)
    : Node(type::Name<Map>::Value, std::move(name), std::move(description), options, timestamp),
      predicate_(std::move(predicate)) {}

std::shared_ptr<Map> Map::Make(std::string name, std::string description, Options options) {
    return std::make_shared<Map>(std::move(name), std::move(description), options, std::chrono::system_clock::now());
}

std::shared_ptr<Node> Map::Find(std::string_view path) const {
    TreeLock const lock;
    return FindLocked(path);
}

// A name may hold dots itself: the longest name comes first.
std::shared_ptr<Node> Map::FindLocked(std::string_view path) const {
    if (auto child = FindStepLocked(path)) return child;
    for (std::size_t dot = path.size(); dot > 0 && (dot = path.rfind('.', dot - 1)) != std::string_view::npos;) {
        auto const map = std::dynamic_pointer_cast<Map>(FindStepLocked(path.substr(0, dot)));
        if (!map) continue;
        if (auto node = map->FindLocked(path.substr(dot + 1))) return node;
    }
    return nullptr;
}

std::shared_ptr<Node> Map::FindStepLocked(std::string_view step) const {
    if (auto child = FindChildLocked(step)) return child;
    std::size_t const bracket = step.rfind('[');
    if (bracket == std::string_view::npos || step.back() != ']') return nullptr;
    std::size_t index = 0;
    char const* const last = step.data() + step.size() - 1;
    auto const [end, error] = std::from_chars(step.data() + bracket + 1, last, index);
    if (error != std::errc() || end != last) return nullptr;
    auto const vector = std::dynamic_pointer_cast<Vector>(FindChildLocked(step.substr(0, bracket)));
    return vector ? vector->FindLocked(index) : nullptr;
}

std::shared_ptr<Node> Map::FindChildLocked(std::string_view name) const {
    auto const& children = GetChildrenLocked();
    auto const found =
        std::find_if(children.begin(), children.end(), [&](auto const& child) { return child->GetName() == name; });
    return found == children.end() ? nullptr : *found;
}

std::shared_ptr<Node> Map::FindChild(std::string_view name) const {
    TreeLock const lock;
    return FindChildLocked(name);
}

void Map::Insert(std::shared_ptr<Node> child) {
    CheckChild(child.get());
    std::string const& name = child->GetName();
    Nodes const self{GetPtr()};
    auto const now = std::chrono::system_clock::now();
    {
        TreeLock const lock;
        CheckNotFrozenLocked();
        if (FindChildLocked(name)) throw std::invalid_argument(Join(GetPathLocked(), name) + ": the name is taken");
        AdoptLocked({child});
        SetTimestampLocked(now);
    }
    FireAll(self);
}

void Map::Exchange(std::vector<std::string> const& removed, std::vector<std::shared_ptr<Node>> added) {
    for (auto const& child : added) CheckChild(child.get());
    // Afterwards the former children: what goes is destroyed without the lock.
    Nodes children;
    auto const now = std::chrono::system_clock::now();
    TreeLock const lock;
    CheckNotFrozenLocked();
    for (auto const& child : GetChildrenLocked()) {
        if (std::find(removed.begin(), removed.end(), child->GetName()) == removed.end()) children.push_back(child);
    }
    std::size_t const kept = children.size();
    for (auto& child : added) {
        std::string const& name = child->GetName();
        auto const hasName = [&](auto const& other) { return other->GetName() == name; };
        if (std::any_of(children.begin(), children.end(), hasName)) {
            throw std::invalid_argument(Join(GetPathLocked(), name) + ": the name is taken");
        }
        CheckAdoptableLocked(*child);
        children.push_back(std::move(child));
    }
    if (kept == children.size() && kept == GetChildrenLocked().size()) return;
    ReplaceChildrenLocked(children);
    SetTimestampLocked(now);
    SetPendingLocked();
}

void Map::CheckChild(Node const* child) const {
    if (!child) throw std::invalid_argument(Join(GetPath(), "?") + ": there is no node to insert");
    std::string const& name = child->GetName();
    if (name.empty()) throw std::invalid_argument(Join(GetPath(), "?") + ": a node without a name cannot be inserted");
    if (predicate_ && !predicate_(*child)) {
        throw std::invalid_argument(Join(GetPath(), name) + ": the map does not take this node");
    }
}

void Map::SetOne(Change change) {
    std::vector<Change> changes;
    changes.push_back(std::move(change));
    Set(std::move(changes));
}

void Map::Set(std::vector<Change> changes) {
    Value::Batch batch;
    for (Change const& change : changes) {
        auto const node = Find(change.name);
        std::string const path = Join(GetPath(), change.name);
        if (!node) throw std::out_of_range(path + ": there is no such configuration node");
        if (!change.value) throw std::invalid_argument(path + ": there is no value to set");
        auto value = Node::GetPtr<Value>(node);
        auto object = value->Convert(*change.value);
        batch.emplace_back(std::move(value), std::move(object));
    }
    Value::SetAll(std::move(batch));
}

void Map::Schema(cereal::JSONOutputArchive& archive) const {
    detail::WriteJson(archive, "type", "object");
    archive.setNextName("properties");
    archive.startNode();
    for (auto const& child : GetChildren()) {
        archive.setNextName(child->GetName().c_str());
        archive.startNode();
        if (!child->GetDescription().empty()) detail::WriteJson(archive, "description", child->GetDescription());
        child->Schema(archive);
        archive.finishNode();
    }
    archive.finishNode();
    WriteAccess(archive);
}

void Map::Schema(std::vector<configuration::Schema> const& schemas) {
    for (configuration::Schema const& schema : schemas) Apply(schema);
}

void Map::Apply(configuration::Schema const& schema) {
    std::string_view path = schema.GetPath();
    auto map = GetPtr<Map>();
    for (std::size_t dot; (dot = path.find('.')) != std::string_view::npos; path.remove_prefix(dot + 1)) {
        std::string_view const name = path.substr(0, dot);
        auto next = map->FindChild(name);
        if (!next) map->Insert(next = Make(std::string(name), "", schema.GetOptions()));
        CheckType(*next, type::Name<Map>::Value);
        map = Node::GetPtr<Map>(next);
    }
    map->ApplyHere(schema, std::string(path));
}

void Map::ApplyHere(configuration::Schema const& schema, std::string const& name) {
    std::size_t const bracket = name.find('[');
    auto node = bracket == std::string::npos ? schema.Make(name)
                                             : Vector::Make(name.substr(0, bracket), "", schema.GetOptions(), schema);
    auto const present = FindChild(node->GetName());
    if (!present) return Insert(std::move(node));
    CheckType(*present, node->GetTypeName());
}

void Map::ReadData(cereal::JSONInputArchive& archive, Plan& plan) {
    if (detail::IsInList(archive)) throw cereal::Exception(GetPath() + ": expected an object, found a list");
    while (char const* const name = archive.getNodeName()) {
        auto const child = FindChild(name);
        if (!child) throw cereal::Exception(Join(GetPath(), name) + ": there is no such configuration node");
        ReadChild(*child, archive, plan);
    }
}

void Map::WriteData(cereal::JSONOutputArchive& archive, Which which) const { WriteChildren(archive, which); }

// A map has no value of its own to stage.
void Map::CheckLocked(object::Object const&) const {}

bool Map::IsCurrentLocked(object::Object const&) const noexcept { return true; }

void Map::CommitLocked(ObjectPtr&) noexcept {}

}  // namespace qel::configuration::node
