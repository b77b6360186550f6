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
    GstElement* const added = element.get();
    gst_bin_add(GST_BIN(bin), added);
    return added;
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

bool Pipeline::IsAtWork() const {
    // A fold visits the elements again when they change meanwhile, so the answer is only ever set.
    auto const lookAtPad = [](GValue const* item, GValue* atWork, gpointer) -> gboolean {
        if (gst_pad_get_task_state(GST_PAD(g_value_get_object(item))) == GST_TASK_STARTED) {
            g_value_set_boolean(atWork, TRUE);
        }
        return TRUE;
    };
    auto const lookAtElement = [](GValue const* item, GValue* atWork, gpointer inner) -> gboolean {
        GstIterator* const pads = gst_element_iterate_pads(GST_ELEMENT(g_value_get_object(item)));
        gst_iterator_fold(pads, *static_cast<GstIteratorFoldFunction*>(inner), atWork, nullptr);
        gst_iterator_free(pads);
        return TRUE;
    };
    GValue result = G_VALUE_INIT;
    g_value_init(&result, G_TYPE_BOOLEAN);
    GstIteratorFoldFunction inner = lookAtPad;
    GstIterator* const elements = gst_bin_iterate_recurse(GST_BIN(element_.get()));
    while (gst_iterator_fold(elements, lookAtElement, &result, &inner) == GST_ITERATOR_RESYNC) {
        gst_iterator_resync(elements);
    }
    gst_iterator_free(elements);
    return g_value_get_boolean(&result) != FALSE;
}

GstFailure::GstFailure(GstMessage* message) {
    GError* raw = nullptr;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
        gst_message_parse_warning(message, &raw, nullptr);
    } else {
        gst_message_parse_error(message, &raw, nullptr);
    }
    GstPtr<GError> const error(raw);
    domain = error->domain;
    code = error->code;
    text = error->message;
}

}  // namespace qel::host
