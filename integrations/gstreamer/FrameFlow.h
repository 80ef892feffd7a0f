#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "integrations/gstreamer/BufferMark.h"
#include "integrations/gstreamer/FrameReceiver.h"
#include "integrations/gstreamer/FrameTrace.h"
#include "integrations/gstreamer/FramesInside.h"

namespace vdrgst {

struct NodeTraits {
    std::string name;
    Order order = Order::kArrival;
    bool isSink = false;         // nothing that leaves it is a frame: renderers, muxers
    bool isMixer = false;        // makes one frame of several, and goes on with the first of them
    bool dropsByDesign = false;  // frames that it drops are no losses; so with mixers
    bool keepsNothing = false;   // what has not left when a call returns has been dropped
};

// Where the frames of one pipeline are, and which of them are lost. It knows no GStreamer: whoever
// sees the buffers tells it what happens.
//
//   source ──handOn: born──> in the air ──arrive──> inside an element ──handOn──> in the air ──>
//   ...
//                                │                      │
//                             landed                    ├─ callReturned, of a sink or once it left
//                                │                      ├─ overtaken, dropped or failed: a loss
//                                v                      v  flushed: none
//                     nobody has it: it is through, once all before it are
//
// The numbers go up by one, and frames are through in their order: a loss is known before any frame
// behind it is through. Any thread; a call takes one lock and some hundred nanoseconds.
class FrameFlow {
public:
    // The recorder takes no loss of the first ten frames.
    static constexpr uint32_t kFirstFrame = 11;
    // A frame that so many have followed is through, wherever it is.
    static constexpr size_t kMostFrames = 1024;

    // `receiver` must outlive this.
    explicit FrameFlow(FrameReceiver& receiver) : mReceiver(receiver) {}

    NodeIndex addNode(NodeTraits traits);
    // It turned out that nothing that leaves it is a frame.
    void becomesSink(NodeIndex node, uint64_t now);

    struct Handing {
        uint64_t now;
        uint32_t calledWith;     // frame with which this thread was sent into the element, if any
        bool isThreadOfElement;  // the element's own thread does it, as that of a queue
        bool isSource;           // frames that are not known begin here
    };
    // The element pushes a buffer: the frame in it, which is in the air until it has landed.
    uint32_t handOn(NodeIndex node, const BufferMark& mark, const Handing& handing);
    // The call that handed it on has returned; `node`: which handed it on.
    void landed(NodeIndex node, uint32_t frame, uint64_t now);

    // The element is called with the frame.
    void arrive(NodeIndex node, uint32_t frame, const BufferMark& mark, uint64_t queuedAt,
                uint64_t now);
    enum class Outcome { kTaken, kFlushed, kFailed };
    struct Return {
        uint64_t now;
        uint64_t workTime;
        Outcome outcome;
    };
    void callReturned(NodeIndex node, uint32_t frame, const Return& result);

    // The element says that it dropped a frame: the one with this running time, or else the one
    // with which it was called.
    void dropped(NodeIndex node, int64_t presentation, uint32_t calledWith, uint64_t now);
    // What rests in the element is thrown away.
    void flushed(NodeIndex node);
    // Nothing leaves the element any more.
    void ended(NodeIndex node, uint64_t now);

    // The pipeline is stopped: all frames are through, and everything is forgotten.
    void close();

private:
    using Entry = FramesInside::Entry;

    struct Node {
        explicit Node(NodeTraits nodeTraits)
              : traits(std::move(nodeTraits)), inside(traits.order) {}

        NodeTraits traits;
        FramesInside inside;
        bool hasThread = false;            // frames leave it on a thread of its own
        uint64_t freeSince = 0;            // that thread, from its last frame
        const void* lastMemory = nullptr;  // of what left it last
        uint32_t lastFrame = kNoFrame;
    };

    // Null for what a stopped pipeline has left behind.
    Node* nodeAt(NodeIndex node);
    FrameTrace* traceOf(uint32_t frame);
    uint32_t begin(NodeIndex node, const BufferMark& mark, uint64_t now);
    static bool isCopy(const Node& node, const BufferMark& mark);
    uint32_t handOnCopy(const Node& node);
    static void stampHandOn(Node& node, Passage& passage, const Handing& handing);
    size_t passageOf(FrameTrace& trace, NodeIndex node);
    void overtake(Node& node, NodeIndex index, const Entry& leaver, const BufferMark& mark,
                  uint64_t now);
    void lose(NodeIndex node, uint32_t frame, LossKind kind, uint64_t now);
    void leaves(Node& node, uint32_t frame);
    void giveUpOldest();
    void reportThrough();

    FrameReceiver& mReceiver;

    std::mutex mMutex;        // guards all below
    std::deque<Node> mNodes;  // mFirstNode and on
    NodeIndex mFirstNode = 0;
    std::deque<std::unique_ptr<FrameTrace>> mTraces;  // of frames mFirst and on
    uint32_t mFirst = kFirstFrame;
    bool mHasFailed =
            false;  // an element has answered with an error, and nothing was flushed since
    std::vector<uint32_t> mScratch;
};

}  // namespace vdrgst
