#include "integrations/gstreamer/ThreadCalls.h"

namespace vdrgst {

ThreadCalls& ThreadCalls::ofThisThread() {
    thread_local ThreadCalls calls;
    return calls;
}

const ThreadCalls::Call& ThreadCalls::chain(const void* pad, NodeIndex node, const void* buffer,
                                            uint64_t now) {
    size_t first = mPushed.size();
    size_t count = 0;
    const bool isOfList = !mCalls.empty() && !mCalls.back().isPush && mCalls.back().pad == pad;
    if (!mCalls.empty() && (mCalls.back().isPush || isOfList)) {
        first = mCalls.back().first;
        count = mCalls.back().count;
    }
    // A probe may have put another buffer in the place of the only one.
    if (buffer != nullptr && count > 1) {
        const size_t end = first + count;
        while (first < end && mPushed[first].buffer != buffer) {
            ++first;
        }
        count = first < end ? 1 : 0;
    }
    return mCalls.emplace_back(Call{pad, node, false, isOfList, now, 0, first, count});
}

void ThreadCalls::leave(uint64_t now) {
    const Call call = mCalls.back();
    mCalls.pop_back();
    if (call.isPush) {
        mPushed.resize(call.first);
    }
    if (!mCalls.empty()) {
        mCalls.back().elsewhere += call.isOfList ? call.elsewhere : now - call.since;
    }
}

ThreadCalls::Inside ThreadCalls::inside(NodeIndex node) const {
    for (auto call = mCalls.rbegin(); call != mCalls.rend(); ++call) {
        if (!call->isPush && call->node == node) {
            return {true,
                    call->count > 0 ? mPushed[call->first + call->count - 1].frame : kNoFrame};
        }
    }
    return {false, kNoFrame};
}

}  // namespace vdrgst
