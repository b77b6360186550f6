#include "gstreamer.hpp"

#include "error.hpp"

namespace qel::host {

void InitialiseGStreamer() {
    GError* raw = nullptr;
    if (gst_init_check(nullptr, nullptr, &raw) != FALSE) return;
    GstPtr<GError> const error(raw);
    throw Error(std::string("GStreamer cannot be used: ") + (error ? error->message : "it does not say why"));
}

GstPtr<GstElement> MakeElement(char const* kind) {
    GstElement* const element = gst_element_factory_make(kind, nullptr);
    if (element == nullptr) {
        throw Error(std::string("GStreamer has no element '") + kind +
                    "'; install its plug-ins (the base, good, ugly and libav sets)");
    }
    return GstPtr<GstElement>(GST_ELEMENT(gst_object_ref_sink(element)));
}

GstElement* AddTo(GstElement* bin, GstPtr<GstElement> element) {
    gst_bin_add(GST_BIN(bin), element.get());
    return element.get();
}

Pipeline::Pipeline(char const* name) {
    InitialiseGStreamer();
    element_.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(name))));
    bus_.reset(gst_element_get_bus(element_.get()));
}

Pipeline::~Pipeline() { gst_element_set_state(element_.get(), GST_STATE_NULL); }

GstPtr<GstMessage> Pipeline::TakeMessage(GstMessageType kinds) const {
    return GstPtr<GstMessage>(gst_bus_pop_filtered(bus_.get(), kinds));
}

GstPtr<GstMessage> Pipeline::WaitForMessage(GstMessageType kinds) const {
    return GstPtr<GstMessage>(gst_bus_timed_pop_filtered(bus_.get(), GST_CLOCK_TIME_NONE, kinds));
}

GstFailure::GstFailure(GstMessage* message) {
    GError* raw = nullptr;
    gst_message_parse_error(message, &raw, nullptr);
    GstPtr<GError> const error(raw);
    domain = error->domain;
    code = error->code;
    text = error->message;
}

}  // namespace qel::host
