#include "descriptor_watch.hpp"

#include <string_view>
#include <utility>

#include <boost/json.hpp>

#include "qel/configuration/json.hpp"
#include "text.hpp"

namespace qel::host {
namespace {

using configuration::Event;
using configuration::Node;
using configuration::node::Map;

/// What json::Data writes: the members of a map, or an object with the one member that any other node is.
boost::json::object ReadObject(Node const& node) {
    return boost::json::parse(ToValidUtf8(configuration::json::Data(node))).as_object();
}

boost::json::value ReadValue(Node const& node) {
    boost::json::object object = ReadObject(node);
    return node.Is<Map>() ? boost::json::value(std::move(object)) : object.begin()->value();
}

}  // namespace

boost::json::object ReadDescriptors(Map const& descriptors) {
    boost::json::object const read = ReadObject(descriptors);
    std::map<std::string_view, boost::json::value const*> byName;
    for (auto const& member : read) byName.emplace(member.key(), &member.value());
    boost::json::object sorted;
    for (auto const& [name, descriptor] : byName) sorted.emplace(name, *descriptor);
    return sorted;
}

DescriptorWatch::DescriptorWatch(Map& descriptors) : descriptors_(descriptors.GetPtr<Map>()) {
    descriptorsBinding_ = descriptors_->Bind([this](std::shared_ptr<Event const> const&) { FollowNew(); });
    FollowNew();
    std::lock_guard<std::mutex> const lock(mutex_);
    start_ = ReadDescriptors(*descriptors_);
    // What came in between is part of the start.
    changes_.clear();
    told_.clear();
    for (auto const& [name, descriptor] : start_) {
        told_[std::string(name)] = descriptor;
        for (auto const& [member, value] : descriptor.as_object()) {
            told_[std::string(name) + "." + std::string(member)] = value;
        }
    }
}

DescriptorWatch::~DescriptorWatch() {
    descriptorsBinding_ = {};
    bindings_.clear();
}

void DescriptorWatch::FollowNew() {
    for (auto const& descriptor : descriptors_->GetChildren()) {
        {
            std::lock_guard<std::mutex> const lock(bindingsMutex_);
            if (!bindings_.try_emplace(descriptor->GetName()).second) continue;
        }
        Follow(descriptor);
        Take(*descriptor);
    }
}

void DescriptorWatch::Follow(NodePtr const& descriptor) {
    std::vector<type::Binding> bindings;
    if (descriptor->Is<Map>()) {
        for (auto const& member : descriptor->As<Map>().GetChildren()) {
            bindings.push_back(
                member->Bind([this](std::shared_ptr<Event const> const& event) { Take(event->GetNode()); }));
        }
    }
    std::lock_guard<std::mutex> const lock(bindingsMutex_);
    bindings_[descriptor->GetName()] = std::move(bindings);
}

void DescriptorWatch::Take(Node const& node) {
    std::lock_guard<std::mutex> const lock(mutex_);
    // Read under the lock, so that the order of the changes is that of the values.
    Change change{std::chrono::system_clock::now(), node.GetPath(descriptors_), ReadValue(node)};
    auto const [told, isNew] = told_.try_emplace(change.path, change.value);
    if (!isNew && told->second == change.value) return;
    told->second = change.value;
    changes_.push_back(std::move(change));
    came_.notify_one();
}

std::optional<DescriptorWatch::Change> DescriptorWatch::Next(std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!came_.wait_for(lock, limit, [this] { return !changes_.empty(); })) return std::nullopt;
    Change change = std::move(changes_.front());
    changes_.pop_front();
    return change;
}

}  // namespace qel::host
