#include "model_watch.hpp"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <sys/inotify.h>
#include <sys/stat.h>

// A file counts as changed when its writer closes it, when it is moved in or out or removed, and when its permissions
// change; not while it is being written.

namespace qel::inference {
namespace {

constexpr std::uint32_t Coming = IN_CREATE | IN_MOVED_TO, Going = IN_DELETE | IN_MOVED_FROM;
// A folder has one watch, whoever asks for it: what is wanted of it adds up. A link may lead from a model to the root.
constexpr std::uint32_t Kinds = Coming | Going | IN_ONLYDIR | IN_MASK_ADD;
constexpr std::uint32_t RootKinds = Kinds | IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t FolderKinds = Kinds | IN_CLOSE_WRITE | IN_ATTRIB;

}  // namespace

ModelWatch::ModelWatch(boost::filesystem::path root)
    : root_(std::move(root)), inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!inotify_) throw std::system_error(errno, std::generic_category(), "cannot follow changes of the model root");
}

bool ModelWatch::WatchRoot() {
    rootWatch_ = inotify_add_watch(inotify_.Get(), root_.c_str(), RootKinds);
    return rootWatch_ >= 0;
}

bool ModelWatch::Watch(std::string const& name) {
    auto const folder = root_ / name;
    bool isWatched = true;
    Watches const now{Add(folder, isWatched), Add(folder / "onnx", isWatched)};
    Watches const before = std::exchange(watches_.try_emplace(name, Watches{-1, -1}).first->second, now);
    for (int const watch : now) {
        if (watch >= 0) owners_[watch].insert(name);
    }
    for (int const watch : before) {
        if (watch >= 0 && watch != now[0] && watch != now[1]) Drop(watch, name);
    }
    if (now == Watches{-1, -1}) watches_.erase(name);
    return isWatched;
}

int ModelWatch::Add(boost::filesystem::path const& folder, bool& isWatched) {
    int const watch = inotify_add_watch(inotify_.Get(), folder.c_str(), FolderKinds);
    if (watch < 0 && errno != ENOENT && errno != ENOTDIR) isWatched = false;
    return watch;
}

void ModelWatch::Drop(int watch, std::string const& name) {
    auto const owners = owners_.find(watch);
    if (owners == owners_.end()) return;
    owners->second.erase(name);
    if (!owners->second.empty()) return;
    owners_.erase(owners);
    if (watch != rootWatch_) inotify_rm_watch(inotify_.Get(), watch);
}

ModelWatch::Changes ModelWatch::Read() {
    Changes changes;
    alignas(inotify_event) std::array<char, 16384> block;
    while (true) {
        ssize_t const count = read(inotify_.Get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return changes;
        for (ssize_t at = 0; at < count;) {
            inotify_event event{};
            std::memcpy(&event, block.data() + at, sizeof(event));
            char const* const entry = block.data() + at + sizeof(event);
            Note(event.wd, event.mask, event.len > 0 ? entry : "", changes);
            at += static_cast<ssize_t>(sizeof(event) + event.len);
        }
    }
}

void ModelWatch::Note(int watch, std::uint32_t kind, std::string const& entry, Changes& changes) {
    if ((kind & IN_Q_OVERFLOW) != 0) {
        changes.any = true;
    } else if (watch == rootWatch_) {
        if ((kind & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
            inotify_rm_watch(inotify_.Get(), rootWatch_);
            rootWatch_ = -1;
            changes.rootLost = true;
        } else {
            changes.names.insert(entry);
        }
    } else if (auto const owners = owners_.find(watch); owners != owners_.end()) {
        for (std::string const& name : owners->second) {
            bool const isNewFile = (kind & IN_CREATE) != 0 && (kind & IN_ISDIR) == 0;
            if (!isNewFile || !IsBeingWritten(name, entry)) changes.names.insert(name);
        }
        if ((kind & IN_IGNORED) != 0) owners_.erase(owners);
    }
}

bool ModelWatch::IsBeingWritten(std::string const& name, std::string const& entry) const {
    // A link that is made has no writer that would close it.
    struct stat status {};
    auto const path = root_ / name / "onnx" / entry;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

}  // namespace qel::inference
