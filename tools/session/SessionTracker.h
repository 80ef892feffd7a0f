#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vdrdump {

struct FrameRange {
    uint32_t first;
    uint32_t last;
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
    std::vector<FrameRange> gaps;  // where frames are missing; the first ones only
};

// Follows the frame numbers of one file, in file order, and tells its camera sessions apart. A
// dump does not mark where a session begins, but its frame numbers then start over. Records stand
// in the order in which frames were completed, so a number that goes back a little is a late
// frame, or the same frame again, and no new session:
//
//   behind the highest by     0   repeated
//   at most kNear, seen           repeated, but the session's first number starts over
//   at most kNear, below first    late
//   at most kInFlight, missing    late
//   everything else               starts over
class SessionTracker {
public:
    static constexpr uint32_t kInFlight = 80;  // frames that the recorder keeps at once
    static constexpr uint32_t kNear = 8;       // frames by which completion strays in practice
    static constexpr size_t kMostGaps = 1024;

    // Whether this frame number begins a new session, which restart() then does.
    bool startsOver(uint32_t frame) const;
    void restart();
    void add(uint32_t frame);

    const SessionSummary& session() const { return mSession; }

private:
    bool isSeen(uint32_t behind) const { return behind < kInFlight && mSeen[behind]; }
    void addAhead(uint32_t frame);
    void addLate(uint32_t frame);
    void closeGap(uint32_t frame);
    void addGap(uint32_t first, uint32_t last);

    SessionSummary mSession;
    std::bitset<kInFlight> mSeen;  // bit i: the highest number less i had a record
};

}  // namespace vdrdump
