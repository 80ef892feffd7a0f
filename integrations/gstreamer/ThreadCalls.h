#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "integrations/gstreamer/BufferMark.h"
#include "integrations/gstreamer/FrameTrace.h"

namespace vdrgst {

// The calls of pads that are under way on one thread, innermost last: a push calls the element
// behind the pad, which pushes again. It tells which frame a call has brought, and how long an
// element took without what it called. One thread; allocates nothing once it was as deep before.
class ThreadCalls {
public:
    // A buffer that is being pushed, and the frame in it, if any.
    struct Pushed {
        const void* buffer;
        uint32_t frame;
        BufferMark mark;
    };
    struct Call {
        const void* pad;
        NodeIndex node;  // pushing, or called
        bool isPush;
        bool isOfList;  // the element takes one buffer of the list with which it was called
        uint64_t since;
        uint64_t elsewhere;  // time spent in what it called
        size_t first;        // its frames, in what is pushed
        size_t count;
    };

    static ThreadCalls& ofThisThread();

    void push(const void* pad, NodeIndex node, uint64_t now) {
        mCalls.push_back({pad, node, true, false, now, 0, mPushed.size(), 0});
    }
    // To the push just begun.
    void addPushed(const Pushed& pushed) {
        mPushed.push_back(pushed);
        ++mCalls.back().count;
    }
    // An element is called with a buffer of the innermost push, or with all where `buffer` is null.
    const Call& chain(const void* pad, NodeIndex node, const void* buffer, uint64_t now);
    // When the innermost push began; `now` where the element was called in another way.
    uint64_t pushedAt(uint64_t now) const {
        return !mCalls.empty() && mCalls.back().isPush ? mCalls.back().since : now;
    }

    // The innermost call, if it is this pad's.
    const Call* innermost(const void* pad) const {
        return !mCalls.empty() && mCalls.back().pad == pad ? &mCalls.back() : nullptr;
    }
    const Pushed& pushed(const Call& call, size_t i) const { return mPushed[call.first + i]; }
    void leave(uint64_t now);

    // Whether this thread was sent into the element, and with which frame.
    struct Inside {
        bool isInside;
        uint32_t frame;
    };
    Inside inside(NodeIndex node) const;

private:
    std::vector<Call> mCalls;
    std::vector<Pushed> mPushed;
};

}  // namespace vdrgst
