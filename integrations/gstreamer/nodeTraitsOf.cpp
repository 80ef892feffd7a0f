#include "integrations/gstreamer/nodeTraitsOf.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "integrations/gstreamer/PadState.h"

namespace vdrgst {
namespace {

template <size_t size>
bool isAmong(const char* const (&names)[size], const char* name) {
    return std::any_of(std::begin(names), std::end(names),
                       [name](const char* one) { return std::strcmp(one, name) == 0; });
}

const char* factoryName(GstElement* element) {
    GstElementFactory* const factory = gst_element_get_factory(element);
    return factory != nullptr ? GST_OBJECT_NAME(factory) : "";
}

// No source pad, or none that carries frames: what a muxer pushes is none.
bool isSinkOfFrames(GstElement* element) {
    bool hasOtherCaps = false;
    bool hasFrames = false;
    GST_OBJECT_LOCK(element);
    const bool hasSourcePad = element->numsrcpads > 0;
    for (GList* item = element->srcpads; item != nullptr; item = item->next) {
        GstCaps* const caps = gst_pad_get_current_caps(GST_PAD_CAST(item->data));
        if (caps != nullptr) {
            (areFrameCaps(caps) ? hasFrames : hasOtherCaps) = true;
            gst_caps_unref(caps);
        }
    }
    GST_OBJECT_UNLOCK(element);
    return !hasSourcePad || (hasOtherCaps && !hasFrames);
}

}  // namespace

NodeTraits nodeTraitsOf(GstElement* element) {
    // Their purpose is that frames are dropped, some of them or all for a while.
    static constexpr const char* kGates[] = {"valve", "input-selector", "output-selector"};
    static constexpr const char* kRates[] = {"videorate"};

    gchar* const name = gst_object_get_name(GST_OBJECT_CAST(element));
    NodeTraits traits;
    traits.name = name;
    g_free(name);
    const char* const factory = factoryName(element);
    const gchar* const kind = gst_element_class_get_metadata(GST_ELEMENT_GET_CLASS(element),
                                                             GST_ELEMENT_METADATA_KLASS);
    const bool isCodec = kind != nullptr && (std::strstr(kind, "Encoder") != nullptr ||
                                             std::strstr(kind, "Decoder") != nullptr);
    traits.keepsNothing = isAmong(kGates, factory);
    traits.dropsByDesign = traits.keepsNothing || isAmong(kRates, factory);
    traits.isMixer = !traits.dropsByDesign && element->numsinkpads > 1 && element->numsrcpads == 1;
    traits.order = isCodec || traits.isMixer ? Order::kTime : Order::kArrival;
    traits.isSink = isSinkOfFrames(element);
    return traits;
}

}  // namespace vdrgst
