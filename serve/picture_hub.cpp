#include "picture_hub.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace qel::serve {
namespace {

using Drawn = std::function<void(std::chrono::nanoseconds)>;

/// What all viewers with the same wishes share: the last picture that was drawn for one of them.
class Rendition {
public:
    explicit Rendition(LookOptions const& options) : options_(options) {}

    std::shared_ptr<LivePicture const> Get(Scene const& scene, Drawn const& drawn) {
        // Held while drawing: who wants the same picture waits for it.
        std::lock_guard<std::mutex> const lock(mutex_);
        if (last_ && last_->sequence >= scene.sequence) return last_;
        auto const start = std::chrono::steady_clock::now();
        last_ = std::make_shared<LivePicture const>(Draw(scene, options_));
        if (drawn) drawn(std::chrono::steady_clock::now() - start);
        return last_;
    }

private:
    LookOptions const options_;
    std::mutex mutex_;
    std::shared_ptr<LivePicture const> last_;
};

/// Wakes one viewer until the viewer goes.
class Alarm {
public:
    explicit Alarm(std::function<void()> wake) : wake_(std::move(wake)) {}

    void Ring() {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (wake_) wake_();
    }
    void Silence() {
        std::lock_guard<std::mutex> const lock(mutex_);
        wake_ = {};
    }

private:
    std::mutex mutex_;
    std::function<void()> wake_;
};

}  // namespace

struct PictureHub::State {
    using Alarms = std::vector<std::shared_ptr<Alarm>>;

    explicit State(Drawn whenDrawn) : drawn(std::move(whenDrawn)) {}

    /// Puts a scene, or none, in place of the one before, and says whom to wake.
    Alarms Exchange(std::shared_ptr<Scene> next) {
        // Declared before the lock, so that the pixels of the one before are freed after it.
        std::shared_ptr<Scene const> former;
        std::lock_guard<std::mutex> const lock(mutex);
        if (closed && next) return {};
        if (next) next->sequence = ++sequence;
        former = std::exchange(scene, std::move(next));
        return alarms;
    }

    std::shared_ptr<Rendition> GetRendition(LookOptions const& options) {
        std::lock_guard<std::mutex> const lock(mutex);
        std::erase_if(renditions, [](auto const& rendition) { return rendition.second.expired(); });
        auto& known = renditions[options];
        auto rendition = known.lock();
        if (!rendition) known = rendition = std::make_shared<Rendition>(options);
        return rendition;
    }

    mutable std::mutex mutex;
    std::shared_ptr<Scene const> scene;
    std::uint64_t sequence = 0;
    bool closed = false;
    Drawn drawn;
    Alarms alarms;
    std::map<LookOptions, std::weak_ptr<Rendition>> renditions;
};

namespace {

/// State: of the hub, which this file alone can name.
template <class State>
class HubViewer final : public Viewer {
public:
    HubViewer(std::shared_ptr<State> state, std::shared_ptr<Rendition> rendition, std::function<void()> wake)
        : state_(std::move(state)), rendition_(std::move(rendition)), alarm_(std::make_shared<Alarm>(std::move(wake))) {
        std::lock_guard<std::mutex> const lock(state_->mutex);
        state_->alarms.push_back(alarm_);
    }
    ~HubViewer() override {
        {
            std::lock_guard<std::mutex> const lock(state_->mutex);
            std::erase(state_->alarms, alarm_);
        }
        alarm_->Silence();
    }

    std::shared_ptr<LivePicture const> Draw() override {
        std::shared_ptr<Scene const> scene;
        Drawn drawn;
        {
            std::lock_guard<std::mutex> const lock(state_->mutex);
            scene = state_->scene;
            drawn = state_->drawn;
        }
        return scene ? rendition_->Get(*scene, drawn) : nullptr;
    }

    std::uint64_t GetSequence() const override {
        std::lock_guard<std::mutex> const lock(state_->mutex);
        return state_->scene ? state_->scene->sequence : 0;
    }

    bool IsAlive() const override {
        std::lock_guard<std::mutex> const lock(state_->mutex);
        return !state_->closed;
    }

private:
    std::shared_ptr<State> state_;
    std::shared_ptr<Rendition> rendition_;
    std::shared_ptr<Alarm> alarm_;
};

}  // namespace

PictureHub::PictureHub(Drawn drawn) : state_(std::make_shared<State>(std::move(drawn))) {}

PictureHub::~PictureHub() { Close(); }

void PictureHub::Show(Scene scene) {
    for (auto const& alarm : state_->Exchange(std::make_shared<Scene>(std::move(scene)))) alarm->Ring();
}

void PictureHub::Clear() { state_->Exchange(nullptr); }

void PictureHub::Close() {
    {
        std::lock_guard<std::mutex> const lock(state_->mutex);
        if (std::exchange(state_->closed, true)) return;
        state_->drawn = {};
    }
    for (auto const& alarm : state_->Exchange(nullptr)) alarm->Ring();
}

std::shared_ptr<Viewer> PictureHub::Look(LookOptions const& options, std::function<void()> wake) {
    return std::make_shared<HubViewer<State>>(state_, state_->GetRendition(options), std::move(wake));
}

std::size_t PictureHub::GetViewers() const {
    std::lock_guard<std::mutex> const lock(state_->mutex);
    return state_->alarms.size();
}

}  // namespace qel::serve
