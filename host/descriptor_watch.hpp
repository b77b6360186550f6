#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "qel/configuration/node/map.hpp"
#include "qel/type/binding.hpp"

namespace qel::host {

/// The values of all descriptors, in the order of their names.
/// descriptors: "algorithms.info".
boost::json::object ReadDescriptors(configuration::node::Map const& descriptors);

/// Follows what algorithms publish, from its making on. Descriptors may come and change on any threads meanwhile.
class DescriptorWatch {
public:
    struct Change {
        std::chrono::system_clock::time_point time;
        /// "motion.model_status" for a value of a descriptor, "motion" for a descriptor that is new.
        std::string path;
        boost::json::value value;
    };

    /// descriptors: "algorithms.info"; its nodes are kept alive.
    explicit DescriptorWatch(configuration::node::Map& descriptors);
    DescriptorWatch(DescriptorWatch const&) = delete;
    DescriptorWatch& operator=(DescriptorWatch const&) = delete;
    ~DescriptorWatch();

    /// All descriptors as they were when the watch began.
    boost::json::object const& GetStart() const noexcept { return start_; }

    /// The next change since then, each of them once and in order; nothing when none comes within the limit. For one
    /// thread.
    std::optional<Change> Next(std::chrono::milliseconds limit);

private:
    using NodePtr = std::shared_ptr<configuration::Node>;

    void Follow(NodePtr const& descriptor);
    void FollowNew();
    void Take(configuration::Node const& node);

    std::shared_ptr<configuration::node::Map> descriptors_;
    boost::json::object start_;

    std::mutex mutex_;
    std::condition_variable came_;
    std::deque<Change> changes_;
    // What has been told of each path: a node may fire again with the value that it had when its first event was read.
    std::map<std::string, boost::json::value> told_;

    std::mutex bindingsMutex_;
    std::map<std::string, std::vector<type::Binding>> bindings_;
    // The last member: no handler may run when the others go.
    type::Binding descriptorsBinding_;
};

}  // namespace qel::host
