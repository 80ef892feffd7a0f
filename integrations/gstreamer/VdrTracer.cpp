#include "integrations/gstreamer/VdrTracer.h"

#include <memory>

#include "integrations/gstreamer/FrameRecorder.h"
#include "integrations/gstreamer/PipelineWatch.h"
#include "integrations/gstreamer/RecorderLibrary.h"
#include "integrations/gstreamer/TracerOptions.h"
#include "integrations/gstreamer/debugCategory.h"

GstDebugCategory* vdrDebugCategory = nullptr;

namespace {

using vdrgst::FrameRecorder;
using vdrgst::PipelineWatch;

struct VdrTracer {
    GstTracer parent;
    std::unique_ptr<FrameRecorder>* recorder;  // GObject knows no constructors
    std::unique_ptr<PipelineWatch>* watch;
};

struct VdrTracerClass {
    GstTracerClass parent;
};

GstTracerClass* parentClass = nullptr;

enum Property : guint { kStatistics = 1 };

PipelineWatch& watchOf(VdrTracer* self) {
    return **self->watch;
}

void onPadPushPre(VdrTracer* self, GstClockTime now, GstPad* pad, GstBuffer* buffer) {
    watchOf(self).padPushPre(now, pad, buffer);
}

void onPadPushListPre(VdrTracer* self, GstClockTime now, GstPad* pad, GstBufferList* list) {
    watchOf(self).padPushListPre(now, pad, list);
}

void onPadPushPost(VdrTracer* self, GstClockTime now, GstPad* pad, GstFlowReturn /*result*/) {
    watchOf(self).padPushPost(now, pad);
}

void onPadChainPre(VdrTracer* self, GstClockTime now, GstPad* pad, GstBuffer* buffer) {
    watchOf(self).padChainPre(now, pad, buffer);
}

void onPadChainListPre(VdrTracer* self, GstClockTime now, GstPad* pad, GstBufferList* /*list*/) {
    watchOf(self).padChainPre(now, pad, nullptr);
}

void onPadChainPost(VdrTracer* self, GstClockTime now, GstPad* pad, GstFlowReturn result) {
    watchOf(self).padChainPost(now, pad, result);
}

void onPadPushEventPre(VdrTracer* self, GstClockTime now, GstPad* pad, GstEvent* event) {
    watchOf(self).padPushEventPre(now, pad, event);
}

void onElementPostMessagePre(VdrTracer* self, GstClockTime now, GstElement* element,
                             GstMessage* message) {
    watchOf(self).elementPostMessagePre(now, element, message);
}

void onElementChangeStatePost(VdrTracer* self, GstClockTime /*now*/, GstElement* element,
                              GstStateChange change, GstStateChangeReturn /*result*/) {
    watchOf(self).elementChangeStatePost(element, change);
}

void onBinAddPost(VdrTracer* self, GstClockTime /*now*/, GstBin* /*bin*/, GstElement* /*element*/,
                  gboolean /*result*/) {
    watchOf(self).binChanged();
}

void onBinRemovePre(VdrTracer* self, GstClockTime /*now*/, GstBin* /*bin*/, GstElement* element) {
    watchOf(self).binRemoved(element);
}

void onElementRemovePad(VdrTracer* self, GstClockTime /*now*/, GstElement* /*element*/,
                        GstPad* pad) {
    watchOf(self).padRemoved(pad);
}

void registerHooks(GstTracer* tracer) {
    gst_tracing_register_hook(tracer, "pad-push-pre", G_CALLBACK(onPadPushPre));
    gst_tracing_register_hook(tracer, "pad-push-post", G_CALLBACK(onPadPushPost));
    gst_tracing_register_hook(tracer, "pad-push-list-pre", G_CALLBACK(onPadPushListPre));
    gst_tracing_register_hook(tracer, "pad-push-list-post", G_CALLBACK(onPadPushPost));
    gst_tracing_register_hook(tracer, "pad-chain-pre", G_CALLBACK(onPadChainPre));
    gst_tracing_register_hook(tracer, "pad-chain-post", G_CALLBACK(onPadChainPost));
    gst_tracing_register_hook(tracer, "pad-chain-list-pre", G_CALLBACK(onPadChainListPre));
    gst_tracing_register_hook(tracer, "pad-chain-list-post", G_CALLBACK(onPadChainPost));
    gst_tracing_register_hook(tracer, "pad-push-event-pre", G_CALLBACK(onPadPushEventPre));
    gst_tracing_register_hook(tracer, "element-post-message-pre",
                              G_CALLBACK(onElementPostMessagePre));
    gst_tracing_register_hook(tracer, "element-change-state-post",
                              G_CALLBACK(onElementChangeStatePost));
    gst_tracing_register_hook(tracer, "bin-add-post", G_CALLBACK(onBinAddPost));
    gst_tracing_register_hook(tracer, "bin-remove-pre", G_CALLBACK(onBinRemovePre));
    gst_tracing_register_hook(tracer, "element-remove-pad", G_CALLBACK(onElementRemovePad));
}

// The parameters are known only now. Without a recorder there are no hooks, and no cost.
void constructed(GObject* object) {
    G_OBJECT_CLASS(parentClass)->constructed(object);
    auto* const self = reinterpret_cast<VdrTracer*>(object);
    gchar* parameters = nullptr;
    g_object_get(object, "params", &parameters, nullptr);
    const vdrgst::TracerOptions options = vdrgst::TracerOptions::parse(parameters);
    g_free(parameters);
    zk::IVideoDataRecoder* const library = vdrgst::RecorderLibrary::load(options);
    if (library == nullptr) {
        return;
    }
    *self->recorder = std::make_unique<FrameRecorder>(*library, options.root);
    *self->watch = std::make_unique<PipelineWatch>(**self->recorder);
    registerHooks(GST_TRACER_CAST(self));
    GST_INFO_OBJECT(self, "recording into %s", options.root.c_str());
}

void finalize(GObject* object) {
    auto* const self = reinterpret_cast<VdrTracer*>(object);
    delete self->watch;
    delete self->recorder;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

GstStructure* statisticsOf(VdrTracer* self) {
    const FrameRecorder::Statistics all = *self->recorder != nullptr
                                                  ? (*self->recorder)->statistics()
                                                  : FrameRecorder::Statistics{};
    return gst_structure_new("vdr-statistics", "pipelines", G_TYPE_UINT, all.sessions, "frames",
                             G_TYPE_UINT64, all.frames, "lost", G_TYPE_UINT64, all.lost, "bare",
                             G_TYPE_UINT64, all.bare, "announced", G_TYPE_UINT,
                             all.losses.announced, "done", G_TYPE_UINT, all.losses.done, "limited",
                             G_TYPE_UINT, all.losses.limited, "unanswered", G_TYPE_UINT,
                             all.losses.unanswered, nullptr);
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    if (id == kStatistics) {
        g_value_take_boxed(value, statisticsOf(reinterpret_cast<VdrTracer*>(object)));
    } else {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void initClass(gpointer klass, gpointer /*data*/) {
    parentClass = GST_TRACER_CLASS(g_type_class_peek_parent(klass));
    GObjectClass* const objectClass = G_OBJECT_CLASS(klass);
    objectClass->constructed = constructed;
    objectClass->finalize = finalize;
    objectClass->get_property = getProperty;
    g_object_class_install_property(
            objectClass, kStatistics,
            g_param_spec_boxed(
                    "statistics", "Statistics", "What was recorded, and what was lost",
                    GST_TYPE_STRUCTURE,
                    static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS)));
}

void initInstance(GTypeInstance* instance, gpointer /*klass*/) {
    auto* const self = reinterpret_cast<VdrTracer*>(instance);
    self->recorder = new std::unique_ptr<FrameRecorder>;
    self->watch = new std::unique_ptr<PipelineWatch>;
}

}  // namespace

GType vdr_tracer_get_type() {
    static const GType type = g_type_register_static_simple(
            GST_TYPE_TRACER, "GstVdrTracer", sizeof(VdrTracerClass), initClass, sizeof(VdrTracer),
            initInstance, static_cast<GTypeFlags>(0));
    return type;
}
