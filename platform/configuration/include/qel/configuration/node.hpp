#pragma once

#include <chrono>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qel/configuration/archive.hpp"
#include "qel/configuration/event.hpp"
#include "qel/configuration/export.hpp"
#include "qel/configuration/node/binding/option.hpp"
#include "qel/configuration/node/freeze.hpp"
#include "qel/configuration/node/option.hpp"
#include "qel/object/object.hpp"
#include "qel/type/binding.hpp"

namespace qel::configuration {

namespace detail {

class HandlerList;

}  // namespace detail

/// A node of a configuration tree: a value, or a map or vector of further nodes. Nodes live in shared pointers and are
/// made by the Make functions of their classes.
///
/// A value changes in three steps: Stage remembers a new one, Commit makes it current, Fire tells the handlers bound to
/// the node. Set, Copy, Insert and Add take all the steps at once.
///
/// Memory: an operation that runs out of it throws std::bad_alloc and has changed nothing, unless it says otherwise.
///
/// Threads: any thread may call any operation at any time. A reader sees the old or the new value of a node, never a
/// mixture. No lock is held while handlers (and the predicate of a map) run, so these may call everything as well.
///
/// JSON: values and vectors are written and read as one value under the archive's next name, maps member by member in
/// the archive's current object (json.hpp does all of it with texts). Untrusted text must be checked for its depth
/// before cereal's reader parses it, as json::Stage does.
class QEL_CONFIGURATION_EXPORT Node : public object::Object, public std::enable_shared_from_this<Node> {
public:
    using Timestamp = std::chrono::system_clock::time_point;
    using Handler = std::function<void(std::shared_ptr<Event const>)>;

    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;
    ~Node() override;

    std::string const& GetName() const noexcept { return name_; }
    std::string const& GetDescription() const noexcept { return description_; }
    node::Options GetOptions() const noexcept { return options_; }
    /// When the node was made or last changed (a map or vector: when its children last did).
    Timestamp GetTimestamp() const;
    /// The node above, or null.
    std::shared_ptr<Node> GetParent() const;

    /// The names from below root down to this node, joined by dots, elements of vectors as "name[index]"; the empty
    /// text for root itself. Without a root, or with one that is not above this node, from the top of the tree; the
    /// name of the top node counts then, unless it is empty.
    std::string GetPath(std::shared_ptr<Node const> const& root = {}) const;

    /// A shared pointer to this node; throws std::bad_weak_ptr for a node that lives in none.
    std::shared_ptr<Node> GetPtr() { return shared_from_this(); }
    std::shared_ptr<Node const> GetPtr() const { return shared_from_this(); }
    /// The same as a pointer to node type T; throws object::BadCast when the node is no T.
    template <class T>
    std::shared_ptr<T> GetPtr() {
        return GetPtr<T>(GetPtr());
    }
    template <class T>
    std::shared_ptr<T const> GetPtr() const {
        return GetPtr<T>(GetPtr());
    }
    /// The same for a pointer that may be empty, such as one that Map::Find gives: a missing node is an object::BadCast
    /// from 'null', never an empty result.
    template <class T, class N>
    static auto GetPtr(std::shared_ptr<N> const& node) {
        using Target = std::conditional_t<std::is_const_v<N>, T const, T>;
        if (auto target = std::dynamic_pointer_cast<Target>(node)) return target;
        throw node ? BadCastError(*node, type::Name<T>::Value) : object::BadCast("null", type::Name<T>::Value);
    }

    /// The exception that says that this node is not of the type of that name; the caller throws it.
    object::BadCast BadCastError(char const* typeName) const { return {GetTypeName(), typeName}; }
    static object::BadCast BadCastError(Node const& node, char const* typeName) { return node.BadCastError(typeName); }

    /// Calls the handler whenever this node fires, until the binding is dropped. Throws std::invalid_argument for an
    /// empty handler.
    ///
    /// Handlers run on the thread that fires, in the order they were bound; where several threads fire, one handler may
    /// run on several at once. Once dropping the binding returns, the handler is not running on another thread and will
    /// not run again: the drop waits for such a run, so do not hold a lock then that the handler takes. A handler may
    /// drop its own binding: that returns at once. The node may go before the binding.
    type::Binding Bind(Handler handler, node::binding::Options options = {});

    /// Makes what is staged in this node and below it current, all of it at once.
    void Commit();
    /// Forgets what is staged in this node and below it.
    void Discard();
    /// Calls the handlers of every node below that a commit changed and that has not fired since, then those of this
    /// node, in any case. All of them run, whatever they throw; then the first exception is thrown on. Firing the node
    /// again calls a handler that has failed once more.
    void Fire();

    /// Forbids changes of this node and all below it, or allows them again; see node::Freeze.
    void Freeze(node::Freeze mode);
    bool IsFrozen() const;

    /// Stages what the archive holds and appends the nodes that it staged. Equal values are skipped. All or nothing:
    /// throws, before staging anything, std::logic_error for a read-only or frozen node, std::out_of_range for a value
    /// out of range and cereal::Exception for a missing member, an unknown one or one of another JSON type.
    void StageData(cereal::JSONInputArchive& archive, std::vector<std::shared_ptr<Node>>& changed);
    /// Writes the current value; throws std::logic_error for a write-only node. Write-only nodes below are left out.
    void Data(cereal::JSONOutputArchive& archive) const;
    /// Writes the default value; a vector's is empty.
    void Defaults(cereal::JSONOutputArchive& archive) const;
    /// Writes the keys of the node's JSON schema into the archive's current object.
    virtual void Schema(cereal::JSONOutputArchive& archive) const = 0;

protected:
    enum class Which : unsigned char { Current, Default };
    using ObjectPtr = std::shared_ptr<object::Object const>;
    using Nodes = std::vector<std::shared_ptr<Node>>;
    /// What a StageData is going to stage: the new value of each node.
    using Plan = std::vector<std::pair<std::shared_ptr<Node>, ObjectPtr>>;

    Node(char const* typeName, std::string name, std::string description, node::Options options, Timestamp timestamp);

    Nodes GetChildren() const;
    /// Calls the handlers of each node; throws the first exception on when all have run.
    static void FireAll(Nodes const& nodes);
    /// Reads new values for a node and those below it into the plan.
    static void ReadChild(Node& child, cereal::JSONInputArchive& archive, Plan& plan);
    /// Writes "readOnly" and "writeOnly", as far as they are set.
    void WriteAccess(cereal::JSONOutputArchive& archive) const;
    /// Writes the children that may be seen, under their names or as elements.
    void WriteChildren(cereal::JSONOutputArchive& archive, Which which) const;

    // The lock of the trees is held by the caller of what ends in Locked.
    Nodes const& GetChildrenLocked() const noexcept { return children_; }
    std::string GetPathLocked(Node const* root = nullptr) const;
    void CheckNotFrozenLocked() const;  ///< throws std::logic_error, with the path, for a frozen node
    /// Throws std::invalid_argument for a node that is part of a tree already or above this one.
    void CheckAdoptableLocked(Node const& child) const;
    /// Appends children; throws, before appending any, when one is part of a tree already or above this node.
    void AdoptLocked(Nodes const& children);
    /// Exchanges the children; the former ones are handed back and have no parent any more.
    void ReplaceChildrenLocked(Nodes& children) noexcept;
    ObjectPtr const& GetStagedLocked() const noexcept { return staged_; }
    /// Exchanges the staged value (null: none) with the given one.
    void StageLocked(ObjectPtr& value) noexcept { staged_.swap(value); }
    void SetTimestampLocked(Timestamp timestamp) noexcept { timestamp_ = timestamp; }
    void SetPendingLocked() noexcept { pending_ = true; }  ///< the next Fire, also from above, calls the handlers

private:
    /// Whether data is written member by member into the current object, instead of as one value.
    virtual bool IsGroup() const noexcept { return false; }
    virtual void ReadData(cereal::JSONInputArchive& archive, Plan& plan) = 0;
    virtual void WriteData(cereal::JSONOutputArchive& archive, Which which) const = 0;
    /// Throws when a value that ReadData made must not be staged.
    virtual void CheckLocked(object::Object const& value) const = 0;
    /// Whether staging a value that ReadData made would change nothing.
    virtual bool IsCurrentLocked(object::Object const& value) const noexcept = 0;
    /// Exchanges the current value with a staged one that differs from it.
    virtual void CommitLocked(ObjectPtr& value) noexcept = 0;

    void CheckReadable() const;
    static void CallHandlers(std::shared_ptr<Node> const& node, std::exception_ptr& error) noexcept;
    // Room for what the nodes below hand out is reserved by their number: nothing can fail once a node has changed. A
    // node without any below takes no memory.
    std::size_t CountStagedBelowLocked() const noexcept;
    void CommitTreeLocked(Timestamp now, std::vector<ObjectPtr>& released) noexcept;
    void CommitHereLocked(Timestamp now, ObjectPtr& released) noexcept;
    void DiscardTreeLocked(std::vector<ObjectPtr>& released) noexcept;
    void FreezeTreeLocked(bool frozen, std::vector<ObjectPtr>& released) noexcept;
    std::size_t CountPendingBelowLocked() const noexcept;
    void TakePendingLocked(Nodes& pending) noexcept;
    bool IsOrIsBelowLocked(Node const& other) const noexcept;
    bool HasElements() const noexcept;
    bool IsOn(node::Option option) const noexcept { return options_.Test(option); }

    std::string const name_;
    std::string const description_;
    node::Options const options_;
    // Guarded by the lock of the trees:
    Timestamp timestamp_;
    // Cleared by the destructor of the parent.
    Node* parent_ = nullptr;
    Nodes children_;
    ObjectPtr staged_;
    bool frozen_ = false;
    // A commit has changed the node since it fired last.
    bool pending_ = false;
    // Has a lock of its own.
    std::shared_ptr<detail::HandlerList> const handlers_;
    Event const event_{*this};
};

}  // namespace qel::configuration

template <>
struct qel::type::Name<qel::configuration::Node> {
    static constexpr char const* Value = "qel.configuration.Node";
};
