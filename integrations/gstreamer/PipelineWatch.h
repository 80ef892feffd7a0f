#pragma once

#include <gst/gst.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include "integrations/gstreamer/FrameFlow.h"
#include "integrations/gstreamer/FrameRecorder.h"
#include "integrations/gstreamer/PadState.h"
#include "integrations/gstreamer/ThreadCalls.h"

namespace vdrgst {

// Sees what GStreamer does, and tells the frame flow of the one pipeline that the recorder serves:
// the first whose source pushes a frame, until it is stopped; then the next one that does. Of
// others, one line in the log, and nothing else.
//
// It holds no reference to a buffer and none to an object beyond a call, and changes nothing. Any
// thread; the names of the calls are GStreamer's for its hooks, `now` is its time.
class PipelineWatch {
public:
    // `recorder` must outlive this.
    explicit PipelineWatch(FrameRecorder& recorder) : mRecorder(recorder), mFlow(recorder) {}
    ~PipelineWatch() { stopServing(); }
    PipelineWatch(const PipelineWatch&) = delete;
    PipelineWatch& operator=(const PipelineWatch&) = delete;

    void padPushPre(uint64_t now, GstPad* pad, GstBuffer* buffer);
    void padPushListPre(uint64_t now, GstPad* pad, GstBufferList* list);
    void padPushPost(uint64_t now, GstPad* pad);
    // `buffer`: null for a list.
    void padChainPre(uint64_t now, GstPad* pad, GstBuffer* buffer);
    void padChainPost(uint64_t now, GstPad* pad, GstFlowReturn result);
    void padPushEventPre(uint64_t now, GstPad* pad, GstEvent* event);
    void elementPostMessagePre(uint64_t now, GstElement* element, GstMessage* message);
    void elementChangeStatePost(GstElement* element, GstStateChange change);
    // Elements were put into a bin or taken out of it.
    void binChanged() { ++mGeneration; }
    void binRemoved(GstElement* element);
    void padRemoved(GstPad* pad) { forget(pad); }

private:
    // Null for pads of bins and of pipelines that are not served.
    PadState* servedPad(GstPad* pad);
    // The same of a pad that pushes; where the recorder is free, its pipeline may be served now.
    PadState* pushingPad(GstPad* pad);
    void findPlace(PadState& state, GstPad* pad, uint64_t generation);
    // `top`: of the pipeline that the element is in; none once that is no longer served.
    NodeIndex nodeOf(GstElement* element, GstPad* pad, const GstElement* top);
    // None where no frame has come by it yet; `place`: as in mNodes.
    NodeIndex knownNode(const void* place);
    NodeIndex knownNode(GstPad* pad);
    void forget(const void* place);
    void forgetElement(GstElement* element);
    void serveIfFree(GstElement* element);
    void stopServing();
    void handOn(ThreadCalls& calls, PadState& state, GstPad* pad, GstBuffer* buffer, uint64_t now);

    FrameRecorder& mRecorder;
    FrameFlow mFlow;

    std::atomic<uint64_t> mGeneration{1};       // of what is remembered at pads
    std::atomic<GstElement*> mServed{nullptr};  // its topmost element; an address only
    std::atomic<bool> mIsClosed{false};         // the recorder did not open

    // Held while a session is opened or closed. A pipeline that begins while the last frames of
    // another are written is not recorded, rather than waiting for the disk.
    std::mutex mSessionMutex;
    std::mutex mMutex;                                  // guards all below; taken before the flow's
    std::unordered_map<const void*, NodeIndex> mNodes;  // by element, or by lane where it has some
    std::unordered_set<GstElement*> mRefused;           // that the log has told of
};

}  // namespace vdrgst
