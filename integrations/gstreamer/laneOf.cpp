#include "integrations/gstreamer/laneOf.h"

namespace vdrgst {
namespace {

bool isAlwaysThere(GstPad* pad) {
    GstPadTemplate* const padTemplate = gst_pad_get_pad_template(pad);
    if (padTemplate == nullptr) {
        return true;
    }
    const GstPadPresence presence = GST_PAD_TEMPLATE_PRESENCE(padTemplate);
    gst_object_unref(padTemplate);
    return presence == GST_PAD_ALWAYS;
}

// The only pad on the other side of the element that belongs to this one; a reference.
GstPad* counterpartOf(GstPad* pad) {
    GstIterator* const links = gst_pad_iterate_internal_links(pad);
    if (links == nullptr) {
        return nullptr;
    }
    GstPad* only = nullptr;
    int count = 0;
    GValue item = G_VALUE_INIT;
    while (count < 2 && gst_iterator_next(links, &item) == GST_ITERATOR_OK) {
        if (++count == 1) {
            only = GST_PAD_CAST(g_value_dup_object(&item));
        }
        g_value_unset(&item);
    }
    gst_iterator_free(links);
    if (count > 1) {
        gst_object_unref(only);
        return nullptr;
    }
    return only;
}

}  // namespace

GstPad* laneOf(GstPad* pad) {
    if (isAlwaysThere(pad)) {
        return nullptr;
    }
    GstPad* const counterpart = counterpartOf(pad);
    if (counterpart == nullptr) {
        return nullptr;
    }
    GstPad* const sink = GST_PAD_IS_SINK(pad) ? pad : counterpart;
    const bool isLane = !isAlwaysThere(counterpart);
    gst_object_unref(counterpart);
    return isLane ? sink : nullptr;
}

}  // namespace vdrgst
