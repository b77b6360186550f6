#include "qel/configuration/node.hpp"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include <cereal/archives/json.hpp>

#include "handler_list.hpp"
#include "qel/configuration/node/vector.hpp"
#include "read_json.hpp"
#include "tree_lock.hpp"
#include "write_json.hpp"

namespace qel::configuration {

using detail::TreeLock;

Node::Node(char const* typeName, std::string name, std::string description, node::Options options, Timestamp timestamp)
    : Object(typeName),
      name_(std::move(name)),
      description_(std::move(description)),
      options_(options),
      timestamp_(timestamp),
      handlers_(std::make_shared<detail::HandlerList>()) {}

// Until the children know that their parent is gone, other threads may walk up to it: they use nothing of it but the
// members of Node itself, which are still there.
Node::~Node() {
    if (children_.empty()) return;
    TreeLock const lock;
    for (auto const& child : children_) child->parent_ = nullptr;
}

Node::Timestamp Node::GetTimestamp() const {
    TreeLock const lock;
    return timestamp_;
}

std::shared_ptr<Node> Node::GetParent() const {
    TreeLock const lock;
    return parent_ ? parent_->weak_from_this().lock() : nullptr;
}

std::string Node::GetPath(std::shared_ptr<Node const> const& root) const {
    TreeLock const lock;
    return GetPathLocked(root.get());
}

Node::Nodes Node::GetChildren() const {
    TreeLock const lock;
    return children_;
}

bool Node::IsFrozen() const {
    TreeLock const lock;
    return frozen_;
}

// By the identifier, not by a cast: the node may be in its destructor.
bool Node::HasElements() const noexcept { return GetTypeId() == hash::MurmurThree32(type::Name<node::Vector>::Value); }

std::string Node::GetPathLocked(Node const* root) const {
    // From this node up; each step is an index, which stands behind its name without a dot, or a name.
    std::string path;
    auto const prepend = [&](std::string const& step) {
        path.insert(0, path.empty() || path.front() == '[' ? step : step + '.');
    };
    bool const isBelow = root && IsOrIsBelowLocked(*root);
    Node const* node = this;
    for (; node->parent_ && !(isBelow && node == root); node = node->parent_) {
        if (node->parent_->HasElements()) {
            auto const& elements = node->parent_->children_;
            auto const found = std::find_if(elements.begin(), elements.end(), [&](auto& e) { return e.get() == node; });
            prepend('[' + std::to_string(found - elements.begin()) + ']');
        } else {
            prepend(node->name_);
        }
    }
    if (!(isBelow && node == root) && !node->name_.empty()) prepend(node->name_);
    return path;
}

bool Node::IsOrIsBelowLocked(Node const& other) const noexcept {
    Node const* node = this;
    while (node && node != &other) node = node->parent_;
    return node != nullptr;
}

type::Binding Node::Bind(Handler handler, node::binding::Options options) {
    if (!handler) throw std::invalid_argument(GetPath() + ": the handler to bind must not be empty");
    auto const bound = std::make_shared<detail::BoundHandler>(std::move(handler));
    // Made first: what is added has something to remove it, whatever fails from here on.
    type::Binding binding([list = std::weak_ptr(handlers_), bound] {
        if (auto const handlers = list.lock()) handlers->Remove(*bound);
        bound->End();
    });
    handlers_->Add(bound);
    // Bound first, called then: a change in between reaches the handler twice rather than never.
    if (options.Test(node::binding::Option::CallNow)) bound->Call({GetPtr(), &event_});
    return binding;
}

void Node::Commit() {
    // Declared before the lock: what goes is destroyed without it.
    ObjectPtr own;
    std::vector<ObjectPtr> below;
    auto const now = std::chrono::system_clock::now();
    TreeLock const lock;
    below.reserve(CountStagedBelowLocked());
    CommitHereLocked(now, own);
    for (auto const& child : children_) child->CommitTreeLocked(now, below);
}

std::size_t Node::CountStagedBelowLocked() const noexcept {
    std::size_t count = 0;
    for (auto const& child : children_) count += (child->staged_ ? 1 : 0) + child->CountStagedBelowLocked();
    return count;
}

void Node::CommitTreeLocked(Timestamp now, std::vector<ObjectPtr>& released) noexcept {
    if (staged_) CommitHereLocked(now, released.emplace_back());
    for (auto const& child : children_) child->CommitTreeLocked(now, released);
}

void Node::CommitHereLocked(Timestamp now, ObjectPtr& released) noexcept {
    released.swap(staged_);
    if (!released || IsCurrentLocked(*released)) return;
    CommitLocked(released);
    timestamp_ = now;
    pending_ = true;
}

void Node::Discard() {
    ObjectPtr own;
    std::vector<ObjectPtr> below;
    TreeLock const lock;
    below.reserve(CountStagedBelowLocked());
    own.swap(staged_);
    for (auto const& child : children_) child->DiscardTreeLocked(below);
}

void Node::DiscardTreeLocked(std::vector<ObjectPtr>& released) noexcept {
    if (staged_) released.emplace_back().swap(staged_);
    for (auto const& child : children_) child->DiscardTreeLocked(released);
}

void Node::Freeze(node::Freeze mode) {
    std::vector<ObjectPtr> released;
    TreeLock const lock;
    released.reserve(CountStagedBelowLocked() + 1);
    FreezeTreeLocked(mode == node::Freeze::Frozen, released);
}

void Node::FreezeTreeLocked(bool frozen, std::vector<ObjectPtr>& released) noexcept {
    if (frozen && staged_) released.emplace_back().swap(staged_);
    frozen_ = frozen;
    for (auto const& child : children_) child->FreezeTreeLocked(frozen, released);
}

void Node::CheckNotFrozenLocked() const {
    if (frozen_) throw std::logic_error(GetPathLocked() + ": the configuration node is frozen");
}

void Node::Fire() {
    Nodes below;
    auto const self = GetPtr();
    {
        TreeLock const lock;
        below.reserve(CountPendingBelowLocked());
        pending_ = false;
        for (auto const& child : children_) child->TakePendingLocked(below);
    }
    std::exception_ptr error;
    for (auto const& node : below) CallHandlers(node, error);
    CallHandlers(self, error);
    if (error) std::rethrow_exception(error);
}

std::size_t Node::CountPendingBelowLocked() const noexcept {
    std::size_t count = 0;
    for (auto const& child : children_) count += (child->pending_ ? 1 : 0) + child->CountPendingBelowLocked();
    return count;
}

void Node::TakePendingLocked(Nodes& pending) noexcept {
    if (pending_) {
        pending.push_back(GetPtr());
        pending_ = false;
    }
    for (auto const& child : children_) child->TakePendingLocked(pending);
}

void Node::CallHandlers(std::shared_ptr<Node> const& node, std::exception_ptr& error) noexcept {
    // Shares the node, so that the event keeps it alive.
    node->handlers_->Call({node, &node->event_}, error);
}

void Node::FireAll(Nodes const& nodes) {
    std::exception_ptr error;
    for (auto const& node : nodes) CallHandlers(node, error);
    if (error) std::rethrow_exception(error);
}

void Node::CheckAdoptableLocked(Node const& child) const {
    if (child.parent_) throw std::invalid_argument(child.GetPathLocked() + ": the node is part of a tree already");
    if (IsOrIsBelowLocked(child)) {
        throw std::invalid_argument(GetPathLocked() + ": a node cannot become a child of a node below it");
    }
}

void Node::AdoptLocked(Nodes const& children) {
    for (auto const& child : children) CheckAdoptableLocked(*child);
    children_.insert(children_.end(), children.begin(), children.end());
    for (auto const& child : children) child->parent_ = this;
}

void Node::ReplaceChildrenLocked(Nodes& children) noexcept {
    for (auto const& child : children_) child->parent_ = nullptr;
    for (auto const& child : children) child->parent_ = this;
    children_.swap(children);
}

void Node::StageData(cereal::JSONInputArchive& archive, std::vector<std::shared_ptr<Node>>& changed) {
    CheckReadable();
    Plan plan;
    ReadData(archive, plan);
    changed.reserve(changed.size() + plan.size());
    auto const former = static_cast<std::ptrdiff_t>(changed.size());
    TreeLock const lock;
    for (auto const& [node, value] : plan) node->CheckLocked(*value);
    for (auto& [node, value] : plan) {
        if (!node->staged_ && node->IsCurrentLocked(*value)) continue;
        node->StageLocked(value);
        // A member that comes twice counts once.
        if (std::find(changed.begin() + former, changed.end(), node) == changed.end()) changed.push_back(node);
    }
}

void Node::CheckReadable() const {
    if (IsOn(node::Option::ReadOnly)) {
        throw std::logic_error(GetPath() + ": the configuration value is dil read only");
    }
    TreeLock const lock;
    CheckNotFrozenLocked();
}

void Node::ReadChild(Node& child, cereal::JSONInputArchive& archive, Plan& plan) {
    child.CheckReadable();
    if (child.IsGroup()) {
        detail::ReadObject(archive, child.GetPath(), [&] { child.ReadData(archive, plan); });
    } else {
        child.ReadData(archive, plan);
    }
}

void Node::Data(cereal::JSONOutputArchive& archive) const {
    if (IsOn(node::Option::WriteOnly)) throw std::logic_error(GetPath() + ": the configuration value is write only");
    WriteData(archive, Which::Current);
}

void Node::Defaults(cereal::JSONOutputArchive& archive) const { WriteData(archive, Which::Default); }

void Node::WriteAccess(cereal::JSONOutputArchive& archive) const {
    if (IsOn(node::Option::ReadOnly)) detail::WriteJson(archive, "readOnly", true);
    if (IsOn(node::Option::WriteOnly)) detail::WriteJson(archive, "writeOnly", true);
}

void Node::WriteChildren(cereal::JSONOutputArchive& archive, Which which) const {
    for (auto const& child : GetChildren()) {
        if (which == Which::Current && child->IsOn(node::Option::WriteOnly)) continue;
        archive.setNextName(child->name_.c_str());
        if (child->IsGroup()) archive.startNode();
        child->WriteData(archive, which);
        if (child->IsGroup()) archive.finishNode();
    }
}

}  // namespace qel::configuration
