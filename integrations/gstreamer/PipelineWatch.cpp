#include "integrations/gstreamer/PipelineWatch.h"

#include "integrations/gstreamer/debugCategory.h"
#include "integrations/gstreamer/laneOf.h"
#include "integrations/gstreamer/nodeTraitsOf.h"
#include "platform/Log.h"

namespace vdrgst {
namespace {

// The element at the top of a tree, by its address only: for comparing.
GstElement* topOf(GstElement* element) {
    GstObject* top = GST_OBJECT_CAST(gst_object_ref(element));
    while (GstObject* parent = gst_object_get_parent(top)) {
        gst_object_unref(top);
        top = parent;
    }
    gst_object_unref(top);
    return GST_ELEMENT_CAST(top);
}

FrameFlow::Outcome outcomeOf(GstFlowReturn result) {
    if (result <= GST_FLOW_NOT_NEGOTIATED) {
        return FrameFlow::Outcome::kFailed;
    }
    return result < GST_FLOW_OK ? FrameFlow::Outcome::kFlushed : FrameFlow::Outcome::kTaken;
}

}  // namespace

PadState* PipelineWatch::servedPad(GstPad* pad) {
    PadState& state = PadState::of(pad);
    const uint64_t generation = mGeneration;
    if (state.place.generation != generation) {
        findPlace(state, pad, generation);
    }
    return state.place.node != kNoNode ? &state : nullptr;
}

void PipelineWatch::findPlace(PadState& state, GstPad* pad, uint64_t generation) {
    state.place = {generation, nullptr, kNoNode};
    state.becomeStale();
    GstObject* const parent = gst_object_get_parent(GST_OBJECT_CAST(pad));
    if (parent == nullptr) {
        return;
    }
    if (GST_IS_ELEMENT(parent) && !GST_IS_BIN(parent)) {
        GstElement* const element = GST_ELEMENT_CAST(parent);
        state.place.element = element;
        if (GstElement* const top = topOf(element); top == mServed) {
            state.place.node = nodeOf(element, pad, top);
        }
    }
    gst_object_unref(parent);
}

NodeIndex PipelineWatch::nodeOf(GstElement* element, GstPad* pad, const GstElement* top) {
    const GstPad* const lane = laneOf(pad);
    const void* const place = lane != nullptr ? static_cast<const void*>(lane) : element;
    const std::lock_guard guard(mMutex);
    if (mServed != top) {
        return kNoNode;
    }
    const auto known = mNodes.find(place);
    if (known != mNodes.end()) {
        return known->second;
    }
    NodeTraits traits = nodeTraitsOf(element);
    if (lane != nullptr) {
        // What its other pads carry are other streams.
        traits.isMixer = traits.isSink = false;
        traits.order = Order::kArrival;
    }
    const NodeIndex node = mFlow.addNode(std::move(traits));
    mNodes.emplace(place, node);
    return node;
}

NodeIndex PipelineWatch::knownNode(const void* place) {
    if (mServed == nullptr) {
        return kNoNode;
    }
    const std::lock_guard guard(mMutex);
    const auto known = mNodes.find(place);
    return known != mNodes.end() ? known->second : kNoNode;
}

NodeIndex PipelineWatch::knownNode(GstPad* pad) {
    GstObject* const parent = gst_object_get_parent(GST_OBJECT_CAST(pad));
    if (parent == nullptr) {
        return kNoNode;
    }
    // Of a pad of another parent the address is not among those of elements.
    const GstPad* const lane = mServed != nullptr ? laneOf(pad) : nullptr;
    const NodeIndex node = knownNode(lane != nullptr ? static_cast<const void*>(lane) : parent);
    gst_object_unref(parent);
    return node;
}

void PipelineWatch::serveIfFree(GstElement* element) {
    GstElement* const top = topOf(element);
    // Another source of the same pipeline may be about to open the recorder: this one waits for it,
    // or its first frames would be missing.
    const std::lock_guard guard(mMutex);
    const std::unique_lock opening(mSessionMutex, std::try_to_lock);
    if (!opening.owns_lock() || mServed == top || mIsClosed) {
        return;
    }
    if (mServed != nullptr) {
        if (mRefused.insert(top).second) {
            GST_WARNING_OBJECT(top,
                               "another pipeline is being recorded: no frame of this one will be, "
                               "until that one is stopped");
            VDR_LOGW("GStreamer: %s is not recorded while another pipeline is",
                     GST_OBJECT_NAME(top));
        }
        return;
    }
    if (!mRecorder.open()) {
        mIsClosed = true;
        GST_ERROR_OBJECT(top, "the recorder stays closed, its log says why");
        return;
    }
    GST_INFO_OBJECT(top, "recording this pipeline");
    VDR_LOGI("GStreamer: recording %s", GST_OBJECT_NAME(top));
    mServed = top;
    mRefused.clear();
    ++mGeneration;
}

void PipelineWatch::stopServing() {
    const std::lock_guard closing(mSessionMutex);
    {
        const std::lock_guard guard(mMutex);
        if (mServed == nullptr) {
            return;
        }
        mServed = nullptr;
        ++mGeneration;
        mNodes.clear();
    }
    mFlow.close();
    mRecorder.close();
    const FrameRecorder::Statistics all = mRecorder.statistics();
    GST_INFO("%u pipelines so far, %" G_GUINT64_FORMAT " frames, %" G_GUINT64_FORMAT
             " of them lost; %u losses announced: %u done, %u limited, %u unanswered",
             all.sessions, all.frames, all.lost, all.losses.announced, all.losses.done,
             all.losses.limited, all.losses.unanswered);
}

PadState* PipelineWatch::pushingPad(GstPad* pad) {
    if (PadState* state = servedPad(pad); state != nullptr) {
        return state;
    }
    PadState& state = PadState::of(pad);
    if (state.place.element == nullptr || mIsClosed || !state.isSource()) {
        return nullptr;
    }
    serveIfFree(state.place.element);
    return servedPad(pad);
}

void PipelineWatch::handOn(ThreadCalls& calls, PadState& state, GstPad* pad, GstBuffer* buffer,
                           uint64_t now) {
    const BufferMark mark = state.markOf(buffer);
    const ThreadCalls::Inside inside = calls.inside(state.place.node);
    const bool isThreadOfElement = !inside.isInside && GST_PAD_TASK(pad) != nullptr;
    const uint32_t frame = mFlow.handOn(state.place.node, mark,
                                        {now, inside.frame, isThreadOfElement, state.isSource()});
    calls.addPushed({buffer, frame, mark});
}

void PipelineWatch::padPushPre(uint64_t now, GstPad* pad, GstBuffer* buffer) {
    if (PadState* state = pushingPad(pad); state != nullptr) {
        ThreadCalls& calls = ThreadCalls::ofThisThread();
        calls.push(pad, state->place.node, now);
        handOn(calls, *state, pad, buffer, now);
    }
}

void PipelineWatch::padPushListPre(uint64_t now, GstPad* pad, GstBufferList* list) {
    PadState* const state = pushingPad(pad);
    if (state == nullptr) {
        return;
    }
    ThreadCalls& calls = ThreadCalls::ofThisThread();
    calls.push(pad, state->place.node, now);
    const guint length = gst_buffer_list_length(list);
    for (guint i = 0; i < length; ++i) {
        handOn(calls, *state, pad, gst_buffer_list_get(list, i), now);
    }
}

void PipelineWatch::padPushPost(uint64_t now, GstPad* pad) {
    ThreadCalls& calls = ThreadCalls::ofThisThread();
    const ThreadCalls::Call* const call = calls.innermost(pad);
    if (call == nullptr) {
        return;
    }
    for (size_t i = 0; i < call->count; ++i) {
        mFlow.landed(call->node, calls.pushed(*call, i).frame, now);
    }
    calls.leave(now);
}

void PipelineWatch::padChainPre(uint64_t now, GstPad* pad, GstBuffer* buffer) {
    PadState* const state = servedPad(pad);
    if (state == nullptr) {
        return;
    }
    ThreadCalls& calls = ThreadCalls::ofThisThread();
    const uint64_t queuedAt = calls.pushedAt(now);
    const NodeIndex node = state->place.node;
    const ThreadCalls::Call& call = calls.chain(pad, node, buffer, now);
    if (call.isOfList) {
        return;
    }
    for (size_t i = 0; i < call.count; ++i) {
        const ThreadCalls::Pushed& pushed = calls.pushed(call, i);
        mFlow.arrive(node, pushed.frame, pushed.mark, queuedAt, now);
    }
}

void PipelineWatch::padChainPost(uint64_t now, GstPad* pad, GstFlowReturn result) {
    ThreadCalls& calls = ThreadCalls::ofThisThread();
    const ThreadCalls::Call* const call = calls.innermost(pad);
    if (call == nullptr) {
        return;
    }
    const size_t count = call->isOfList ? 0 : call->count;
    for (size_t i = 0; i < count; ++i) {
        const uint64_t workTime = (now - call->since - call->elsewhere) / count;
        mFlow.callReturned(call->node, calls.pushed(*call, i).frame,
                           {now, workTime, outcomeOf(result)});
    }
    calls.leave(now);
}

// Events come on any thread, so that what is remembered at the pad is left alone.
void PipelineWatch::padPushEventPre(uint64_t now, GstPad* pad, GstEvent* event) {
    switch (GST_EVENT_TYPE(event)) {
        case GST_EVENT_SEGMENT:
            PadState::of(pad).becomeStale();
            break;
        case GST_EVENT_CAPS: {
            PadState::of(pad).becomeStale();
            GstCaps* caps = nullptr;
            gst_event_parse_caps(event, &caps);
            if (const NodeIndex node = knownNode(pad); node != kNoNode && !areFrameCaps(caps)) {
                mFlow.becomesSink(node, now);
            }
            break;
        }
        case GST_EVENT_FLUSH_STOP:
            if (const NodeIndex node = knownNode(pad); node != kNoNode) {
                mFlow.flushed(node);
            }
            break;
        case GST_EVENT_EOS:
            if (const NodeIndex node = knownNode(pad); node != kNoNode) {
                mFlow.ended(node, now);
            }
            break;
        default:
            break;
    }
}

void PipelineWatch::elementPostMessagePre(uint64_t now, GstElement* element, GstMessage* message) {
    // Bins post their children's messages once more.
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_QOS ||
        GST_MESSAGE_SRC(message) != GST_OBJECT_CAST(element)) {
        return;
    }
    const NodeIndex node = knownNode(element);
    if (node == kNoNode) {
        return;
    }
    guint64 runningTime = 0;
    gst_message_parse_qos(message, nullptr, &runningTime, nullptr, nullptr, nullptr);
    const int64_t presentation =
            GST_CLOCK_TIME_IS_VALID(runningTime) ? static_cast<int64_t>(runningTime) : kNoTime;
    mFlow.dropped(node, presentation, ThreadCalls::ofThisThread().inside(node).frame, now);
}

void PipelineWatch::elementChangeStatePost(GstElement* element, GstStateChange change) {
    // No streaming thread of it runs any more.
    if (element == mServed &&
        (change == GST_STATE_CHANGE_PAUSED_TO_READY || change == GST_STATE_CHANGE_READY_TO_NULL)) {
        stopServing();
    }
}

// What was in it went with it, and the next element may come to lie where it was.
void PipelineWatch::forget(const void* place) {
    if (const NodeIndex node = knownNode(place); node != kNoNode) {
        mFlow.flushed(node);
        const std::lock_guard guard(mMutex);
        mNodes.erase(place);
    }
}

void PipelineWatch::forgetElement(GstElement* element) {
    forget(element);
    gst_element_foreach_sink_pad(
            element,
            [](GstElement*, GstPad* pad, gpointer self) -> gboolean {
                static_cast<PipelineWatch*>(self)->forget(pad);
                return TRUE;
            },
            this);
}

void PipelineWatch::binRemoved(GstElement* element) {
    if (mServed == nullptr) {
        return;
    }
    forgetElement(element);
    if (GST_IS_BIN(element)) {
        GstIterator* const all = gst_bin_iterate_recurse(GST_BIN(element));
        gst_iterator_foreach(
                all,
                [](const GValue* item, gpointer self) {
                    static_cast<PipelineWatch*>(self)->forgetElement(
                            GST_ELEMENT_CAST(g_value_get_object(item)));
                },
                this);
        gst_iterator_free(all);
    }
    binChanged();
}

}  // namespace vdrgst
