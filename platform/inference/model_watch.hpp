#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

#include "qel/system/descriptor.hpp"

namespace qel::inference {

/// Notices changes below a model root: folders of models that come and go, and changes of the files in them. Tells only
/// where to look; what has become of the files is seen there. One thread at a time.
class ModelWatch {
public:
    struct Changes {
        std::set<std::string> names;  ///< of models to look at
        bool any = false;             ///< something has been missed: all models are to be looked at
        bool rootLost = false;        ///< the root has been moved or removed; it is no longer watched
    };

    /// Throws std::system_error when the system has no more of what it takes.
    explicit ModelWatch(boost::filesystem::path root);

    /// A descriptor to be read from when there are changes.
    int GetDescriptor() const noexcept { return inotify_.Get(); }
    /// Watches the root for folders that come and go; false when it is no folder that can be watched.
    bool WatchRoot();
    /// Watches the folders of a model as they are now, and no others on its behalf. Returns false when a folder that
    /// is there cannot be watched.
    bool Watch(std::string const& name);
    /// What has happened since the last call; does not wait.
    Changes Read();

private:
    /// A model's own folder and its "onnx"; -1 where it is not there.
    using Watches = std::array<int, 2>;

    int Add(boost::filesystem::path const& folder, bool& isWatched);
    void Drop(int watch, std::string const& name);
    void Note(int watch, std::uint32_t kind, std::string const& entry, Changes& changes);
    bool IsBeingWritten(std::string const& name, std::string const& entry) const;

    boost::filesystem::path root_;
    system::Descriptor inotify_;
    int rootWatch_ = -1;
    std::map<std::string, Watches> watches_;
    // Links may lead several names to one folder, which has one watch.
    std::map<int, std::set<std::string>> owners_;
};

}  // namespace qel::inference
