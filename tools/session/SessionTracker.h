#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/frameData.h"

namespace vdrdump {

struct FrameRange {
    uint32_t first;
    uint32_t last;

    bool meets(const FrameRange& other) const { return first <= other.last && other.first <= last; }
};

struct SessionSummary {
    uint32_t number = 1;  // of the camera session in its file
    uint64_t records = 0;
    uint64_t numbered = 0;         // records with a frame number
    uint32_t first = 0;            // lowest frame number, where any record has one
    uint32_t last = 0;             // highest
    uint64_t missing = 0;          // frame numbers between first and last without a record
    uint64_t repeated = 0;         // records whose frame number came before
    uint64_t late = 0;             // records behind one with a higher number
    uint64_t misnumbered = 0;      // records whose frame number is damaged
    std::vector<FrameRange> gaps;  // where frames are missing, in order; the first ones only
};

// Follows the frame numbers of one file, in file order, and tells its camera sessions apart. A
// dump does not mark where a session begins, but its frame numbers then start over. Records stand
// in the order in which frames were completed, so a number that goes back a little is a late
// frame, or the same frame again, and no new session. Where a number leaves the others, the records
// behind it tell why:
//
//   they go on from it                  ahead: frames are missing; behind: a new session
//   they come back, it was missing      late, however far
//   they come back, it was not          its number is damaged
class SessionTracker {
public:
    static constexpr uint32_t kInFlight = 80;  // frames that the recorder keeps at once
    static constexpr uint32_t kNear = 8;       // frames by which completion strays in practice
    static constexpr size_t kMostGaps = 1024;

    enum class Step : uint8_t { Belongs, StartsOver, Misnumbered };

    // Whether a record with this number belongs to the session whatever follows it.
    bool isPlain(uint32_t frame) const {
        return frame == zk::kNoFrameNumber ||
               (mSession.numbered != 0 && frame - mSession.last - 1 < kInFlight);
    }
    // What a record with this number is, given those of the `count` records behind it.
    Step judge(uint32_t frame, const uint32_t* ahead, size_t count) const;

    // Begins a new session.
    void restart();
    void add(uint32_t frame);
    // A record whose number is damaged.
    void addMisnumbered() {
        ++mSession.records;
        ++mSession.misnumbered;
    }

    const SessionSummary& session() const { return mSession; }

private:
    bool isSeen(uint32_t behind) const { return behind < kInFlight && mSeen[behind]; }
    bool isMissing(uint32_t frame) const;
    Step judgeFirst(uint32_t frame, const uint32_t* ahead, size_t count) const;
    Step judgeAhead(uint32_t frame, const uint32_t* ahead, size_t count) const;
    Step judgeBehind(uint32_t frame, const uint32_t* ahead, size_t count) const;
    void addAhead(uint32_t frame);
    void addLate(uint32_t frame);
    void closeGap(uint32_t frame);
    void addGap(uint32_t first, uint32_t last);

    SessionSummary mSession;
    std::bitset<kInFlight> mSeen;  // bit i: the highest number less i had a record
};

}  // namespace vdrdump
