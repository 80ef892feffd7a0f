#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "demo/Findings.h"
#include "demo/FolderState.h"
#include "demo/FrameFactory.h"
#include "demo/SessionPlan.h"
#include "records/VDRData1.h"

namespace demo {

// Reads the session's binary dump file back and compares every byte with what its frames must
// hold.
class BinFileCheck {
public:
    struct SlowAllocation {
        uint32_t frame;
        vdr1::MemoryAllocTimeoutInfo info;
    };

    // To be made before the session: remembers what lies in `folder`.
    explicit BinFileCheck(const std::string& folder) : mBefore(folder) {}

    void run(const SessionPlan& plan, const FrameFactory& factory, Findings& findings);

    // Valid after run().
    const std::string& path() const { return mPath; }
    uint64_t size() const { return mSize; }
    uint32_t recordsRead() const { return mRecordsRead; }
    const vdr1::VDRData1& firstRecord() const { return mFirstRecord; }
    const std::vector<SlowAllocation>& slowAllocations() const { return mSlowAllocations; }

private:
    bool findFile(const SessionPlan& plan, Findings& findings);
    void readRecords(std::FILE* file, const SessionPlan& plan, const FrameFactory& factory,
                     Findings& findings);
    void note(const vdr1::VDRData1& record);

    const FolderState mBefore;
    std::string mPath;
    uint64_t mSizeBefore = 0;  // a session that starts within the same second is appended to
    uint64_t mSize = 0;
    uint32_t mRecordsRead = 0;
    vdr1::VDRData1 mFirstRecord{};
    std::vector<SlowAllocation> mSlowAllocations;
};

}  // namespace demo
