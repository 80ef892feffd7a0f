#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "tools/explain/Segment.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

struct ReadFile {
    DumpFile file;
    uint64_t records = 0;  // all, kept or not
    bool isDamaged = false;
};

// Keeps the records of chosen frames, as a rule those around losses that are known before anything
// is read, and where wanted those around frames that a binary dump has no record of. Memory is
// bounded by the number of losses, not by the dumps.
class SegmentCollector : public RecordSink {
public:
    static constexpr uint32_t kBefore = 60;
    static constexpr uint32_t kBehind = 30;
    static constexpr size_t kMostLosses = 64;   // of those known before, and of gaps per session
    static constexpr size_t kMostKept = 32768;  // records, 128 MB

    // Which frames are kept around lost ones.
    static FrameRange around(const FrameRange& lost);

    // Of as many lost frames as there may be.
    static std::vector<FrameRange> around(const std::vector<uint32_t>& lost);

    // Finds gaps of binary dumps in `gapsIn`, none where that is none.
    SegmentCollector(const std::vector<FrameRange>& wanted, std::optional<FrameRange> gapsIn);

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd& end) override;
    bool finish() override { return true; }
    bool isDone() const override { return false; }

    const std::vector<Segment>& segments() const { return mSegments; }
    const std::vector<ReadFile>& files() const { return mFiles; }
    bool isFull() const { return mKept >= kMostKept; }

private:
    struct OpenGap {
        FrameRange range;
        uint32_t open;  // frames of it that have not come late
    };

    bool findsGaps() const { return mGapsIn && mFile.kind == DumpKind::Binary; }
    void followGaps(uint32_t frame, const std::shared_ptr<const StoredRecord>& record);
    void keep(uint32_t frame, const std::shared_ptr<const StoredRecord>& record);
    void keepOnly(const std::vector<FrameRange>& gaps);
    Segment newSegment() const;
    void addGaps(const SessionSummary& session, Segment& segment) const;
    void announce(const DumpEnd& end);

    std::vector<FrameRange> mWanted;  // in order, apart from each other
    const std::optional<FrameRange> mGapsIn;
    std::vector<Segment> mSegments;
    size_t mKept = 0;  // in all segments
    std::vector<ReadFile> mFiles;

    DumpFile mFile;
    size_t mFirstOfFile = 0;  // segment
    FrameMap mFrames;         // of the session that is being read
    std::deque<std::shared_ptr<const StoredRecord>> mRecent;
    std::vector<OpenGap> mGaps;
    uint32_t mLast = 0;
    bool mHasLast = false;
};

}  // namespace vdrdump
