#pragma once

#include <cstdint>
#include <vector>

namespace vdrgst {

// An element of the pipeline that frames pass, by the order in which the first of them came.
using NodeIndex = uint32_t;
inline constexpr NodeIndex kNoNode = UINT32_MAX;

inline constexpr uint32_t kNoFrame = 0;

// One frame's way through one element. Times are GStreamer's own, nanoseconds since it was
// initialised, as in its debug log; 0: never happened.
struct Passage {
    NodeIndex node = kNoNode;
    uint64_t queuedAt = 0;    // it was pushed to the element
    uint64_t startedAt = 0;   // a thread of the element took it up
    uint64_t finishedAt = 0;  // the element was through with it
    uint64_t handedOnAt = 0;  // it was pushed on; of a sink, that it came to an end there
    uint64_t workTime = 0;    // of the element's code on that thread, without what it called
    bool hasWorkTime = false;
};

enum class LossKind : uint8_t {
    kOvertaken = 1,  // later frames left the element, and it cannot come any more
    kTooLate = 2,    // the element said that it dropped it for being late
    kFailed = 3,     // the element answered with an error
};

struct Loss {
    NodeIndex node;
    LossKind kind;
    uint64_t foundAt;
};

// All that is known of one frame.
struct FrameTrace {
    uint32_t number = kNoFrame;
    int64_t presentation = 0;  // running time, nanoseconds
    uint64_t bornAt = 0;       // its source pushed it
    uint32_t holders = 0;      // elements and calls that have it; none: it is through
    std::vector<Passage> passages;
    std::vector<Loss> losses;

    void reset() {
        passages.clear();
        losses.clear();
        *this = FrameTrace{kNoFrame, 0, 0, 0, std::move(passages), std::move(losses)};
    }
};

}  // namespace vdrgst
