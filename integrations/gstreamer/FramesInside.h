#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "integrations/gstreamer/BufferMark.h"
#include "integrations/gstreamer/FrameTrace.h"

namespace vdrgst {

// In which order an element lets frames go.
enum class Order : uint8_t {
    kArrival,  // as they came: filters, queues, parsers
    kTime,     // by their times: encoders, decoders, mixers
};

// The frames that one element has, in order of arrival. A buffer that leaves the element is looked
// for among these only, so that two sources with the same times, and old memory that comes back
// under a new frame, cannot be mixed up. One thread at a time. A look costs as many steps as there
// are frames in front of the one that leaves: none for a queue.
class FramesInside {
public:
    struct Entry {
        uint32_t frame = kNoFrame;
        BufferMark mark;        // as its last piece came, with the last times that were known
        size_t passage = 0;     // of the frame's
        uint32_t calls = 0;     // of the element with this frame that have not returned
        uint32_t pieces = 1;    // that came and may still leave
        uint32_t passedBy = 0;  // frames that came later and left earlier
        bool isOut = false;     // pushed on at least once, or given up

        // Another buffer of the same frame has come, as the packets of a network do.
        void addPiece(const BufferMark& piece);
        // A piece leaves. What an element does in the call that brought the frame it does with all
        // of it; on another thread each piece leaves by itself, and may do so while that call, or
        // that with the next piece, is still under way.
        void countOut(bool isInItsOwnCall) {
            isOut = true;
            pieces = isInItsOwnCall || pieces == 0 ? 0 : pieces - 1;
        }
        void giveUp() { countOut(true); }
        bool isGone() const { return isOut && calls == 0 && pieces == 0; }
    };

    explicit FramesInside(Order order) : mOrder(order) {}

    Entry& add(uint32_t frame, const BufferMark& mark, size_t passage);
    // Null where it is not inside.
    Entry* find(uint32_t frame);
    // Which of them is in a buffer that leaves the element: by time, and by memory where that does
    // not tell; null where neither does.
    Entry* known(const BufferMark& mark);
    // Which it may be else: that with which the calling thread was sent into the element, or the
    // oldest of which something is still to come where there are no times.
    Entry* likely(const BufferMark& mark, uint32_t calledWith);
    // Which of them has this running time.
    Entry* at(int64_t presentation);
    // Those of which nothing can leave any more, now that `leaver` leaves in this buffer.
    void findOvertaken(const Entry& leaver, const BufferMark& mark,
                       std::vector<uint32_t>& overtaken);
    // Those that no running call has.
    void findResting(std::vector<uint32_t>& resting) const;
    void remove(uint32_t frame);
    void clear() { mEntries.clear(); }

private:
    bool isOvertaken(Entry& entry, const BufferMark& mark) const;
    Entry* nearest(int64_t BufferMark::*kind, int64_t time);

    const Order mOrder;
    std::vector<Entry> mEntries;
};

}  // namespace vdrgst
