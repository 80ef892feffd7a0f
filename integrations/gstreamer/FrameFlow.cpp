#include "integrations/gstreamer/FrameFlow.h"

#include <algorithm>
#include <utility>

namespace vdrgst {

NodeIndex FrameFlow::addNode(NodeTraits traits) {
    const std::lock_guard guard(mMutex);
    const auto index = mFirstNode + static_cast<NodeIndex>(mNodes.size());
    const Node& node = mNodes.emplace_back(std::move(traits));
    mReceiver.nodeAppeared(index, node.traits.name, node.traits.isSink);
    return index;
}

void FrameFlow::becomesSink(NodeIndex index, uint64_t now) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr || std::exchange(found->traits.isSink, true)) {
        return;
    }
    Node& node = *found;
    mScratch.clear();
    node.inside.findResting(mScratch);
    for (const uint32_t frame : mScratch) {
        FrameTrace& trace = *traceOf(frame);
        trace.passages[passageOf(trace, index)].handedOnAt = now;
        leaves(node, frame);
    }
    reportThrough();
}

uint32_t FrameFlow::handOn(NodeIndex index, const BufferMark& mark, const Handing& handing) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr) {
        return kNoFrame;
    }
    Node& node = *found;
    Entry* entry = node.inside.known(mark);
    if (entry == nullptr && isCopy(node, mark)) {
        return handOnCopy(node);
    }
    if (entry == nullptr) {
        entry = node.inside.likely(mark, handing.calledWith);
    }
    if (entry == nullptr) {
        return handing.isSource ? begin(index, mark, handing.now) : kNoFrame;
    }
    const uint32_t frame = entry->frame;
    FrameTrace& trace = *traceOf(frame);
    stampHandOn(node, trace.passages[entry->passage], handing);
    ++trace.holders;
    node.lastMemory = mark.memory;
    node.lastFrame = frame;
    entry->countOut(handing.calledWith == frame);
    const bool isGone = entry->isGone();
    overtake(node, index, *entry, mark, handing.now);
    if (isGone) {
        leaves(node, frame);
    }
    reportThrough();
    return frame;
}

// Of a mixer's frames nobody sees whether they went into the picture or were left out.
void FrameFlow::overtake(Node& node, NodeIndex index, const Entry& leaver, const BufferMark& mark,
                         uint64_t now) {
    mScratch.clear();
    node.inside.findOvertaken(leaver, mark, mScratch);
    for (const uint32_t frame : mScratch) {
        FrameTrace& trace = *traceOf(frame);
        if (node.traits.isMixer) {
            trace.passages[passageOf(trace, index)].handedOnAt = now;
        } else if (!node.traits.dropsByDesign && !node.inside.find(frame)->isOut) {
            lose(index, frame, LossKind::kOvertaken, now);
        }
        leaves(node, frame);
    }
}

// What an element does on a thread of its own begins when that thread is free for it; whatever it
// waited before, it waited for the thread.
void FrameFlow::stampHandOn(Node& node, Passage& passage, const Handing& handing) {
    if (passage.handedOnAt != 0) {
        return;
    }
    if (handing.isThreadOfElement) {
        node.hasThread = true;
        passage.startedAt = std::max(passage.queuedAt, node.freeSince);
        passage.finishedAt = 0;
    }
    if (passage.finishedAt == 0) {
        passage.finishedAt = handing.now;
    }
    passage.handedOnAt = handing.now;
}

uint32_t FrameFlow::begin(NodeIndex node, const BufferMark& mark, uint64_t now) {
    if (mTraces.size() >= kMostFrames) {
        giveUpOldest();
    }
    const uint32_t number = mFirst + static_cast<uint32_t>(mTraces.size());
    std::unique_ptr<FrameTrace> trace = mReceiver.spareTrace();
    trace->number = number;
    trace->presentation = mark.presentation;
    trace->bornAt = now;
    trace->holders = 1;
    Passage& passage = trace->passages.emplace_back();
    passage.node = node;
    passage.finishedAt = passage.handedOnAt = now;
    mTraces.push_back(std::move(trace));
    mReceiver.frameBorn(number);
    return number;
}

// An element that repeats a frame, as for a higher rate, passes its memory on once more, with a
// time of its own. Without times it might be memory that was used again.
bool FrameFlow::isCopy(const Node& node, const BufferMark& mark) {
    return mark.memory != nullptr && mark.memory == node.lastMemory && mark.presentation != kNoTime;
}

uint32_t FrameFlow::handOnCopy(const Node& node) {
    FrameTrace* const trace = traceOf(node.lastFrame);
    if (trace == nullptr) {
        return kNoFrame;
    }
    ++trace->holders;
    return trace->number;
}

void FrameFlow::landed(NodeIndex node, uint32_t frame, uint64_t now) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(node);
    if (found == nullptr) {
        return;
    }
    found->freeSince = now;
    if (FrameTrace* trace = traceOf(frame); trace != nullptr) {
        --trace->holders;
        reportThrough();
    }
}

void FrameFlow::arrive(NodeIndex index, uint32_t frame, const BufferMark& mark, uint64_t queuedAt,
                       uint64_t now) {
    const std::lock_guard guard(mMutex);
    FrameTrace* const trace = traceOf(frame);
    Node* const found = nodeAt(index);
    if (trace == nullptr || found == nullptr) {
        return;
    }
    Node& node = *found;
    if (Entry* again = node.inside.find(frame); again != nullptr) {
        again->addPiece(mark);
        return;
    }
    const size_t number = passageOf(*trace, index);
    Passage& passage = trace->passages[number];
    if (passage.queuedAt == 0) {
        passage.queuedAt = queuedAt;
        passage.startedAt = node.hasThread ? 0 : now;
    }
    node.inside.add(frame, mark, number).calls = 1;
    ++trace->holders;
}

void FrameFlow::callReturned(NodeIndex index, uint32_t frame, const Return& result) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr) {
        return;
    }
    Node& node = *found;
    Entry* const entry = node.inside.find(frame);
    if (entry == nullptr) {
        return;
    }
    Passage& passage = traceOf(frame)->passages[entry->passage];
    passage.workTime += result.workTime;
    passage.hasWorkTime = !node.hasThread;
    if (--entry->calls > 0) {
        return;
    }
    if (result.outcome == Outcome::kFailed) {
        lose(index, frame, LossKind::kFailed, result.now);
    } else if (result.outcome == Outcome::kTaken) {
        if (passage.finishedAt == 0 && !node.hasThread) {
            passage.finishedAt = result.now;
        }
        if (node.traits.isSink) {
            passage.finishedAt = passage.handedOnAt = result.now;
        } else if (!entry->isGone() && !node.traits.keepsNothing) {
            return;
        }
    }
    leaves(node, frame);
    reportThrough();
}

void FrameFlow::dropped(NodeIndex index, int64_t presentation, uint32_t calledWith, uint64_t now) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr) {
        return;
    }
    Node& node = *found;
    Entry* entry = node.traits.isSink ? nullptr : node.inside.at(presentation);
    if (entry == nullptr || entry->isOut) {
        entry = node.inside.find(calledWith);
    }
    if (entry == nullptr || entry->isOut) {
        return;
    }
    lose(index, entry->frame, LossKind::kTooLate, now);
    entry->giveUp();
    if (entry->isGone()) {
        leaves(node, entry->frame);
        reportThrough();
    }
}

void FrameFlow::flushed(NodeIndex index) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr) {
        return;
    }
    Node& node = *found;
    mHasFailed = false;
    mScratch.clear();
    node.inside.findResting(mScratch);
    for (const uint32_t frame : mScratch) {
        leaves(node, frame);
    }
    reportThrough();
}

void FrameFlow::ended(NodeIndex index, uint64_t now) {
    const std::lock_guard guard(mMutex);
    Node* const found = nodeAt(index);
    if (found == nullptr) {
        return;
    }
    Node& node = *found;
    mScratch.clear();
    node.inside.findResting(mScratch);
    for (const uint32_t frame : mScratch) {
        if (!node.traits.dropsByDesign && !node.traits.isMixer && !node.traits.isSink &&
            !node.inside.find(frame)->isOut) {
            lose(index, frame, LossKind::kOvertaken, now);
        }
        leaves(node, frame);
    }
    reportThrough();
}

void FrameFlow::close() {
    const std::lock_guard guard(mMutex);
    for (std::unique_ptr<FrameTrace>& trace : mTraces) {
        mReceiver.frameThrough(std::move(trace));
    }
    mTraces.clear();
    mFirstNode += static_cast<NodeIndex>(mNodes.size());
    mNodes.clear();
    mFirst = kFirstFrame;
    mHasFailed = false;
}

FrameFlow::Node* FrameFlow::nodeAt(NodeIndex node) {
    return node >= mFirstNode && node - mFirstNode < mNodes.size() ? &mNodes[node - mFirstNode]
                                                                   : nullptr;
}

FrameTrace* FrameFlow::traceOf(uint32_t frame) {
    // Numbers start again after the last.
    const uint32_t place = frame - mFirst;
    return place < mTraces.size() ? mTraces[place].get() : nullptr;
}

// Frames that come in pieces, or again, pass an element in one go.
size_t FrameFlow::passageOf(FrameTrace& trace, NodeIndex node) {
    const auto found =
            std::find_if(trace.passages.begin(), trace.passages.end(),
                         [node](const Passage& passage) { return passage.node == node; });
    if (found == trace.passages.end()) {
        trace.passages.emplace_back().node = node;
        return trace.passages.size() - 1;
    }
    return static_cast<size_t>(found - trace.passages.begin());
}

// An error is passed on by all elements before, to this frame and to those that come behind it: the
// first is the one that tells something.
void FrameFlow::lose(NodeIndex node, uint32_t frame, LossKind kind, uint64_t now) {
    if (kind != LossKind::kFailed || !std::exchange(mHasFailed, true)) {
        traceOf(frame)->losses.push_back({node, kind, now});
    }
}

void FrameFlow::leaves(Node& node, uint32_t frame) {
    node.inside.remove(frame);
    --traceOf(frame)->holders;
}

// In some element it rests for good, or a queue is longer than anybody looks back.
void FrameFlow::giveUpOldest() {
    for (Node& node : mNodes) {
        node.inside.remove(mFirst);
    }
    mTraces.front()->holders = 0;
    reportThrough();
}

void FrameFlow::reportThrough() {
    while (!mTraces.empty() && mTraces.front()->holders == 0) {
        mReceiver.frameThrough(std::move(mTraces.front()));
        mTraces.pop_front();
        ++mFirst;
    }
}

}  // namespace vdrgst
