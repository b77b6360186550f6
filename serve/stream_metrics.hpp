#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "stream_status.hpp"

namespace prometheus {
class Registry;
}

namespace qel::serve {

/// What is counted of one stream, as series of a registry with the label "stream"; they go with the object. The
/// functions may be called on any thread.
class StreamMetrics {
public:
    StreamMetrics(prometheus::Registry& registry, std::string const& id);
    StreamMetrics(StreamMetrics const&) = delete;
    StreamMetrics& operator=(StreamMetrics const&) = delete;
    ~StreamMetrics();

    /// One more frame.
    void CountFrame(std::size_t objects);
    /// stage: "decode", "algorithm", "publish" or "draw"; of others nothing is noted.
    void NoteTime(std::string const& stage, std::chrono::nanoseconds time);
    /// What changes slowly. frames: which the stream, an algorithm or a viewer still holds; delay: by how much a
    /// recording has fallen behind its own pace.
    void NoteStatus(StreamStatus const& status, std::int64_t frames, std::size_t viewers,
                    std::chrono::nanoseconds delay);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Gives all who count for one stream the same metrics, which go with the last of them. Any thread.
class StreamMetricsBook {
public:
    /// registry: outlives the book and all metrics.
    explicit StreamMetricsBook(prometheus::Registry& registry);

    std::shared_ptr<StreamMetrics> Get(std::string const& id);

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace qel::serve
