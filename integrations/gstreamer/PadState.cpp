#include "integrations/gstreamer/PadState.h"

#include <cstring>
#include <mutex>

namespace vdrgst {
namespace {

GQuark quark() {
    static const GQuark quark = g_quark_from_static_string("vdr-pad-state");
    return quark;
}

int64_t runningTime(const GstSegment& segment, GstClockTime time) {
    if (!GST_CLOCK_TIME_IS_VALID(time) || segment.format != GST_FORMAT_TIME) {
        return kNoTime;
    }
    guint64 distance = 0;
    const gint sign = gst_segment_to_running_time_full(&segment, GST_FORMAT_TIME, time, &distance);
    return sign == 0 ? kNoTime : sign * static_cast<int64_t>(distance);
}

// Whether a sink pad of the element carries frames.
bool getsFrames(GstElement* element) {
    bool result = false;
    GST_OBJECT_LOCK(element);
    for (GList* item = element->sinkpads; item != nullptr && !result; item = item->next) {
        GstCaps* const caps = gst_pad_get_current_caps(GST_PAD_CAST(item->data));
        result = areFrameCaps(caps);
        if (caps != nullptr) {
            gst_caps_unref(caps);
        }
    }
    GST_OBJECT_UNLOCK(element);
    return result;
}

// Makes a film of one picture.
bool isFreeze(GstElement* element) {
    GstElementFactory* const factory = gst_element_get_factory(element);
    return factory != nullptr && std::strcmp(GST_OBJECT_NAME(factory), "imagefreeze") == 0;
}

}  // namespace

// Containers and unparsed streams have neither a width nor a rate.
bool areFrameCaps(const GstCaps* caps) {
    if (caps == nullptr || gst_caps_is_any(caps) || gst_caps_is_empty(caps)) {
        return false;
    }
    const GstStructure* const structure = gst_caps_get_structure(caps, 0);
    const char* const name = gst_structure_get_name(structure);
    return (std::strncmp(name, "video/", 6) == 0 || std::strncmp(name, "image/", 6) == 0) &&
           (gst_structure_has_field(structure, "width") != FALSE ||
            gst_structure_has_field(structure, "framerate") != FALSE);
}

PadState& PadState::of(GstPad* pad) {
    auto* state = static_cast<PadState*>(g_object_get_qdata(G_OBJECT(pad), quark()));
    if (state == nullptr) {
        static std::mutex creation;
        const std::lock_guard guard(creation);
        state = static_cast<PadState*>(g_object_get_qdata(G_OBJECT(pad), quark()));
        if (state == nullptr) {
            state = new PadState(pad);
            g_object_set_qdata_full(G_OBJECT(pad), quark(), state,
                                    [](gpointer data) { delete static_cast<PadState*>(data); });
        }
    }
    return *state;
}

void PadState::refresh() {
    if (!mIsStale.exchange(false)) {
        return;
    }
    gst_segment_init(&mSegment, GST_FORMAT_UNDEFINED);
    if (GstEvent* event = gst_pad_get_sticky_event(mPad, GST_EVENT_SEGMENT, 0); event != nullptr) {
        gst_event_copy_segment(event, &mSegment);
        gst_event_unref(event);
    }
    GstCaps* const caps = gst_pad_get_current_caps(mPad);
    mCarriesFrames = areFrameCaps(caps);
    if (caps != nullptr) {
        gst_caps_unref(caps);
    }
    mIsSource = mCarriesFrames && place.element != nullptr &&
                (!getsFrames(place.element) || isFreeze(place.element));
}

bool PadState::carriesFrames() {
    refresh();
    return mCarriesFrames;
}

bool PadState::isSource() {
    refresh();
    return mIsSource;
}

BufferMark PadState::markOf(GstBuffer* buffer) {
    refresh();
    BufferMark mark;
    mark.presentation = runningTime(mSegment, GST_BUFFER_PTS(buffer));
    mark.decoding = runningTime(mSegment, GST_BUFFER_DTS(buffer));
    mark.memory = gst_buffer_n_memory(buffer) > 0
                          ? static_cast<const void*>(gst_buffer_peek_memory(buffer, 0))
                          : static_cast<const void*>(buffer);
    return mark;
}

}  // namespace vdrgst
