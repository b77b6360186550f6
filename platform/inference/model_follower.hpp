#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

#include <boost/filesystem/path.hpp>

#include "model_files.hpp"
#include "model_watch.hpp"
#include "qel/inference/model.hpp"
#include "qel/inference/model/state.hpp"
#include "qel/system/descriptor.hpp"

namespace qel::inference {

/// Keeps the models of a folder loaded as the disk has them, on a thread of its own.
///
/// A change makes a model due a moment later, so that files which change together are read together; of the models
/// that are due the one of the highest priority is looked at first. Whether there is something to do is told by the
/// files' stamps alone, so that it does no harm to look once too often.
class ModelFollower {
public:
    using Report = std::function<void(std::string const& name, model::State state)>;

    /// report: called on the thread. Throws std::system_error when the disk cannot be followed.
    ModelFollower(boost::filesystem::path root, Report report);
    ModelFollower(ModelFollower const&) = delete;
    ModelFollower& operator=(ModelFollower const&) = delete;
    ~ModelFollower();

    /// Any thread.
    std::shared_ptr<Model const> GetModel(std::string_view name) const;
    /// Any thread but the one that reports.
    bool WaitUntilSettled(std::chrono::milliseconds limit);

private:
    using Clock = std::chrono::steady_clock;
    /// A model that is to be looked at.
    struct Due {
        Clock::time_point first;  ///< when that was known
        Clock::time_point time;   ///< when it is to happen
        std::optional<std::int32_t> priority;
    };

    void Run();
    void Step();
    void Wait();
    void ReadChanges();
    void LookAtAll();
    void MarkDue(std::string const& name, Clock::duration delay);
    std::optional<std::string> TakeNext();
    void LookAt(std::string const& name);
    void Load(std::string const& name, ModelFiles const& files);
    /// Nothing when the files have changed meanwhile; then the model is read again when they have settled.
    std::optional<ModelContent> Read(std::string const& name, ModelFiles const& files);
    std::shared_ptr<Model const> Build(std::string const& name, ModelFiles const& files, ModelContent content);
    void Fail(std::string const& name, char const* reason);
    void Replace(std::string const& name, std::shared_ptr<Model const> model);
    bool IsStopped() const;

    boost::filesystem::path root_;
    Report report_;
    system::Descriptor wake_;
    system::Descriptor stop_;

    // Of the thread alone.
    ModelWatch watch_;
    bool isRootWatched_ = true;
    std::map<std::string, Due> due_;
    std::map<std::string, ModelFiles::Stamps> known_;  ///< what the last attempt was made on

    mutable std::mutex mutex_;
    std::condition_variable settledChanged_;
    std::map<std::string, std::shared_ptr<Model const>, std::less<>> models_;
    std::uint64_t asked_ = 0;    ///< how often somebody has asked to wait
    std::uint64_t settled_ = 0;  ///< which of those was the last to be answered

    std::thread thread_;
};

}  // namespace qel::inference
