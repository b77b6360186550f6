#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "scene.hpp"
#include "viewer.hpp"

namespace qel::serve {

/// Holds the newest frame of a stream, for those who look at it. Nothing is converted, drawn or packed unless a viewer
/// asks, and then once for all viewers with the same wishes. A viewer that is slow gets fewer frames. Any thread.
class PictureHub {
public:
    /// drawn: told after each picture how long it took, on the viewer's thread; may be empty.
    explicit PictureHub(std::function<void(std::chrono::nanoseconds)> drawn = {});
    PictureHub(PictureHub const&) = delete;
    PictureHub& operator=(PictureHub const&) = delete;
    /// Its viewers live on, and see that the stream is gone.
    ~PictureHub();

    /// Gives the scene its sequence number, keeps it in place of the one before and wakes the viewers.
    void Show(Scene scene);
    /// Forgets the frame.
    void Clear();
    /// Forgets the frame for good: for the viewers, the stream is gone. They are woken once more.
    void Close();

    std::shared_ptr<Viewer> Look(LookOptions const& options, std::function<void()> wake);
    std::size_t GetViewers() const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

}  // namespace qel::serve
