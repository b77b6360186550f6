#pragma once

#include <memory>
#include <string>

#include <gst/gst.h>

namespace qel::host {

/// Gives back what GStreamer and GLib hand out.
struct GstRelease {
    void operator()(GstElement* element) const noexcept { gst_object_unref(element); }
    void operator()(GstPad* pad) const noexcept { gst_object_unref(pad); }
    void operator()(GstBus* bus) const noexcept { gst_object_unref(bus); }
    void operator()(GstCaps* caps) const noexcept { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const noexcept { gst_sample_unref(sample); }
    void operator()(GstBuffer* buffer) const noexcept { gst_buffer_unref(buffer); }
    void operator()(GstMessage* message) const noexcept { gst_message_unref(message); }
    void operator()(GstEvent* event) const noexcept { gst_event_unref(event); }
    void operator()(GError* error) const noexcept { g_error_free(error); }
    void operator()(gchar* text) const noexcept { g_free(text); }
};

/// Owns one reference to an object of GStreamer, or a text of GLib.
template <class T>
using GstPtr = std::unique_ptr<T, GstRelease>;

/// Makes GStreamer ready for use, once a process; throws Error when it cannot be.
void InitialiseGStreamer();

/// A new element; throws Error naming the kind, and where it usually comes from, when no plug-in offers it.
GstPtr<GstElement> MakeElement(char const* kind);

/// Adds the element to the bin, which owns it from then on.
GstElement* AddTo(GstElement* bin, GstPtr<GstElement> element);

/// A pipeline that is brought to rest before it goes.
class Pipeline {
public:
    explicit Pipeline(char const* name);
    Pipeline(Pipeline const&) = delete;
    Pipeline& operator=(Pipeline const&) = delete;
    ~Pipeline();

    GstElement* Get() const noexcept { return element_.get(); }
    /// The oldest message of the given kinds that nobody took yet, or null at once.
    GstPtr<GstMessage> TakeMessage(GstMessageType kinds) const;
    /// Waits for a message of the given kinds, however long it takes.
    GstPtr<GstMessage> WaitForMessage(GstMessageType kinds) const;
    /// Whether any of its elements has a thread at work.
    bool IsAtWork() const;

private:
    GstPtr<GstElement> element_;
    GstPtr<GstBus> bus_;
};

/// An error or a warning that an element reported on its pipeline's bus.
struct GstFailure {
    GQuark domain = 0;
    int code = 0;
    std::string text;

    explicit GstFailure(GstMessage* message);
    bool Is(GQuark otherDomain, int otherCode) const noexcept { return domain == otherDomain && code == otherCode; }
};

}  // namespace qel::host
