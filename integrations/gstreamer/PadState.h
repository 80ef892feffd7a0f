#pragma once

#include <gst/gst.h>

#include <atomic>
#include <cstdint>

#include "integrations/gstreamer/BufferMark.h"
#include "integrations/gstreamer/FrameTrace.h"

namespace vdrgst {

// What is remembered of a pad, so that a buffer costs no look through the pipeline. It hangs on the
// pad and goes with it. Threads: the pad's streaming thread; becomeStale() any.
class PadState {
public:
    static PadState& of(GstPad* pad);

    // Caps or segment are to be read again with the next buffer.
    void becomeStale() { mIsStale = true; }

    // Where the pad belongs, by the state of affairs numbered `generation`.
    struct Place {
        uint64_t generation = 0;
        GstElement* element = nullptr;  // null: of a bin, which only passes buffers on
        NodeIndex node = kNoNode;       // of the served pipeline; none: of another one
    };
    Place place;

    // The pad's caps say that each of its buffers is a picture, or part of one.
    bool carriesFrames();
    // An element that gets no frames, and whose pad carries some: they begin here.
    bool isSource();
    BufferMark markOf(GstBuffer* buffer);

private:
    explicit PadState(GstPad* pad) : mPad(pad) {}
    void refresh();

    GstPad* const mPad;  // outlives this
    std::atomic<bool> mIsStale{true};
    GstSegment mSegment;
    bool mCarriesFrames = false;
    bool mIsSource = false;
};

// Whether buffers of these caps, which may be null, are pictures: not a container's bytes.
bool areFrameCaps(const GstCaps* caps);

}  // namespace vdrgst
