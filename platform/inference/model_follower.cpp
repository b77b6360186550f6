#include "model_follower.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <poll.h>
#include <sys/eventfd.h>

#include "back_end_library.hpp"
#include "model_impl.hpp"
#include "qel/logging/logger.hpp"
#include "trial.hpp"

namespace qel::inference {
namespace {

namespace fs = boost::filesystem;
using model::BuildingStatus;
using model::LoadingStatus;
using model::State;

logging::Logger const log(logging::Name("qel.inference.backend.Manager"));

// Long enough for the files of a model to be moved or copied into place one after the other.
constexpr std::chrono::milliseconds SettlingTime(50);
constexpr std::chrono::milliseconds LongestSettlingTime(500);
constexpr std::chrono::milliseconds RootSearchInterval(250);

system::Descriptor MakeEvent() {
    system::Descriptor event(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!event) throw std::system_error(errno, std::generic_category(), "cannot follow changes of the model root");
    return event;
}

/// Without anybody waiting on the other side a write cannot fail, but for an event that has been raised already.
void Raise(system::Descriptor const& event) { (void)!eventfd_write(event.Get(), 1); }

/// Starts a thread that no signal is delivered to: those are for the threads of the host.
template <class Body>
std::thread StartWithoutSignals(Body body) {
    sigset_t all, former;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former);
    std::thread thread;
    try {
        thread = std::thread(std::move(body));
    } catch (...) {
        pthread_sigmask(SIG_SETMASK, &former, nullptr);
        throw;
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return thread;
}

/// Folders whose name begins with a dot are no models: they are where models are prepared.
bool IsModelName(std::string const& name) { return !name.empty() && name.front() != '.'; }

}  // namespace

ModelFollower::ModelFollower(fs::path root, Report report)
    : root_(std::move(root)), report_(std::move(report)), wake_(MakeEvent()), stop_(MakeEvent()), watch_(root_) {
    if (!watch_.WatchRoot()) {
        throw std::system_error(errno, std::generic_category(), "cannot follow changes of " + root_.string());
    }
    LookAtAll();
    thread_ = StartWithoutSignals([this] { Run(); });
}

ModelFollower::~ModelFollower() {
    Raise(stop_);
    thread_.join();
}

std::shared_ptr<Model const> ModelFollower::GetModel(std::string_view name) const {
    std::lock_guard<std::mutex> const lock(mutex_);
    auto const found = models_.find(name);
    return found == models_.end() ? nullptr : found->second;
}

bool ModelFollower::WaitUntilSettled(std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    std::uint64_t const question = ++asked_;
    Raise(wake_);
    return settledChanged_.wait_for(lock, limit, [&] { return settled_ >= question; });
}

void ModelFollower::Run() {
    while (!IsStopped()) {
        try {
            Step();
        } catch (std::exception const& error) {
            // No memory, most likely. What was being looked at is looked at again.
            log.Log(logging::Level::Error, "Following the models in %0% stumbled: %1%", root_, error.what());
            std::this_thread::sleep_for(SettlingTime);
        }
    }
}

void ModelFollower::Step() {
    std::uint64_t question = 0;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        question = asked_;
    }
    // Whatever happened on the disk before the question was asked can be read now.
    ReadChanges();
    if (auto const name = TakeNext()) {
        try {
            return LookAt(*name);
        } catch (...) {
            if (auto const known = known_.find(*name); known != known_.end()) known->second = {};
            MarkDue(*name, LongestSettlingTime);
            throw;
        }
    }
    if (due_.empty()) {
        std::lock_guard<std::mutex> const lock(mutex_);
        settled_ = question;
        settledChanged_.notify_all();
    }
    Wait();
}

void ModelFollower::Wait() {
    auto const now = Clock::now();
    auto until = isRootWatched_ ? Clock::time_point::max() : now + RootSearchInterval;
    for (auto const& [name, due] : due_) until = std::min(until, due.time);
    int milliseconds = -1;
    if (until != Clock::time_point::max()) {
        auto const rest = std::chrono::ceil<std::chrono::milliseconds>(until - now).count();
        milliseconds = static_cast<int>(std::max<std::int64_t>(rest, 0));
    }
    std::array<pollfd, 3> waiting{
        {{watch_.GetDescriptor(), POLLIN, 0}, {wake_.Get(), POLLIN, 0}, {stop_.Get(), POLLIN, 0}}};
    (void)poll(waiting.data(), waiting.size(), milliseconds);
    eventfd_t ignored = 0;
    (void)eventfd_read(wake_.Get(), &ignored);
}

bool ModelFollower::IsStopped() const {
    pollfd waiting{stop_.Get(), POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

void ModelFollower::ReadChanges() {
    ModelWatch::Changes const changes = watch_.Read();
    for (std::string const& name : changes.names) MarkDue(name, SettlingTime);
    if (changes.rootLost) {
        log.Log(logging::Level::Error, "The model root %0% is gone; models are loaded again when it is back", root_);
        isRootWatched_ = false;
        LookAtAll();
    }
    if (!isRootWatched_ && watch_.WatchRoot()) {
        isRootWatched_ = true;
        LookAtAll();
    }
    if (changes.any) {
        log.Log(logging::Level::Warning, "Changes below %0% came too fast to be told; all models are looked at", root_);
        LookAtAll();
    }
}

void ModelFollower::LookAtAll() {
    for (auto const& [name, stamps] : known_) MarkDue(name, {});
    boost::system::error_code error;
    for (fs::directory_iterator entry(root_, error), end; !error && entry != end; entry.increment(error)) {
        MarkDue(entry->path().filename().string(), {});
    }
}

void ModelFollower::MarkDue(std::string const& name, Clock::duration delay) {
    if (!IsModelName(name)) return;
    auto const now = Clock::now();
    Due& due = due_.try_emplace(name, Due{now, now, std::nullopt}).first->second;
    due.time = std::min(now + delay, due.first + LongestSettlingTime);
    due.priority.reset();
}

std::optional<std::string> ModelFollower::TakeNext() {
    auto const now = Clock::now();
    auto next = due_.end();
    for (auto i = due_.begin(); i != due_.end(); ++i) {
        if (i->second.time > now) continue;
        if (!i->second.priority) i->second.priority = ModelFiles(root_ / i->first).ReadPriority();
        if (next == due_.end() || *i->second.priority > *next->second.priority) next = i;
    }
    if (next == due_.end()) return std::nullopt;
    std::string name = next->first;
    due_.erase(next);
    return name;
}

void ModelFollower::LookAt(std::string const& name) {
    if (!watch_.Watch(name)) {
        log.Log(logging::Level::Error, "Model %0% cannot be followed: changes of its files will be missed", name);
    }
    ModelFiles const files(root_ / name);
    ModelFiles::Stamps const stamps = files.Look();
    if (!ModelFiles::IsModel(stamps)) {
        if (known_.erase(name) == 0) return;
        Replace(name, nullptr);
        log.Log(logging::Level::Information, "Model %0% is unloaded: its files are gone", name);
        report_(name, State());
        return;
    }
    auto const [known, isNew] = known_.try_emplace(name);
    if (!isNew && known->second == stamps) return;
    known->second = stamps;
    Load(name, files);
}

void ModelFollower::Load(std::string const& name, ModelFiles const& files) {
    report_(name, State(LoadingStatus::Loading, BuildingStatus::Building));
    try {
        std::optional<ModelContent> content = Read(name, files);
        if (!content) return;
        auto model = Build(name, files, std::move(*content));
        std::string const version = model->GetMetadata().GetVersion();
        Replace(name, std::move(model));
        log.Log(logging::Level::Information, "Model %0% is loaded, version %1%", name, version);
        report_(name, State(LoadingStatus::Loaded, BuildingStatus::Ended));
    } catch (std::exception const& error) {
        if (!IsStopped()) Fail(name, error.what());
    }
}

std::optional<ModelContent> ModelFollower::Read(std::string const& name, ModelFiles const& files) {
    std::optional<ModelContent> content;
    std::exception_ptr error;
    try {
        content = files.Read();
    } catch (std::exception const&) {
        error = std::current_exception();
    }
    if (files.Look() != known_[name]) {
        // What was read may belong to two versions, or to none.
        known_.insert_or_assign(name, ModelFiles::Stamps{});
        MarkDue(name, SettlingTime);
        return std::nullopt;
    }
    if (error) std::rethrow_exception(error);
    return content;
}

std::shared_ptr<Model const> ModelFollower::Build(std::string const& name, ModelFiles const& files,
                                                  ModelContent content) {
    try {
        TryModel(*content.model, content.inputShape, content.metadata.GetMaxBatchSize(), stop_.Get());
        report_(name, State(LoadingStatus::Loading, BuildingStatus::Built));
        auto network = GetBackEnd().Load(content.model->GetBytes());
        return std::make_shared<Model>(std::unique_ptr<Model::Impl const>(
            new Model::Impl{name, files.GetModel(), std::move(content.metadata), std::move(content.metadataText),
                            std::move(content.labels), std::move(content.inputShape), std::move(network)}));
    } catch (std::exception const& error) {
        throw std::runtime_error(files.GetModel().string() + " " + error.what());
    }
}

void ModelFollower::Fail(std::string const& name, char const* reason) {
    Replace(name, nullptr);
    log.Log(logging::Level::Error, "Model %0% failed: %1%", name, reason);
    report_(name, State(LoadingStatus::Failed, BuildingStatus::Ended));
}

void ModelFollower::Replace(std::string const& name, std::shared_ptr<Model const> model) {
    // The former model leaves with the argument, behind the lock: whoever asks next need not wait for that.
    std::lock_guard<std::mutex> const lock(mutex_);
    models_[name].swap(model);
    if (models_[name] == nullptr) models_.erase(name);
}

}  // namespace qel::inference
