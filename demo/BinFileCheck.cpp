#include "demo/BinFileCheck.h"

#include <cinttypes>
#include <cstring>

#include "demo/RecordCompare.h"
#include "records/frameData.h"

namespace demo {

void BinFileCheck::run(const SessionPlan& plan, const FrameFactory& factory, Findings& findings) {
    if (!findFile(plan, findings)) {
        return;
    }
    std::FILE* file = std::fopen(mPath.c_str(), "rb");
    if (!findings.expect(file != nullptr, "%s cannot be read", mPath.c_str())) {
        return;
    }
    if (fseeko(file, static_cast<off_t>(mSizeBefore), SEEK_SET) == 0) {
        readRecords(file, plan, factory, findings);
    }
    std::fclose(file);
    findings.expect(mRecordsRead == plan.frames.count(),
                    "%" PRIu32 " records could be read, not %" PRIu32, mRecordsRead,
                    plan.frames.count());
}

bool BinFileCheck::findFile(const SessionPlan& plan, Findings& findings) {
    const FolderState now(mBefore.folder());
    const std::vector<std::string> changed = now.changedSince(mBefore);
    if (!findings.expect(changed.size() == 1, "%zu files below %s were written to instead of one",
                         changed.size(), mBefore.folder().c_str())) {
        return false;
    }
    mPath = now.pathOf(changed.front());
    mSizeBefore = mBefore.sizeOf(changed.front());
    mSize = now.sizeOf(changed.front());
    const uint64_t expected = uint64_t{plan.frames.count()} * zk::kFrameRecordSize;
    findings.expect(mSize - mSizeBefore == expected,
                    "%s has grown by %" PRIu64 " bytes instead of %" PRIu64, mPath.c_str(),
                    mSize - mSizeBefore, expected);
    return true;
}

void BinFileCheck::readRecords(std::FILE* file, const SessionPlan& plan,
                               const FrameFactory& factory, Findings& findings) {
    zk::frameData found{};
    while (mRecordsRead < plan.frames.count() && std::fread(&found, sizeof(found), 1, file) == 1) {
        vdr1::VDRData1 record{};
        std::memcpy(&record, &found, sizeof(record));
        note(record);
        const vdr1::VDRData1 expected = factory.record(plan.frames.first + mRecordsRead);
        zk::frameData wanted{};  // zero behind the fields
        std::memcpy(&wanted, &expected, sizeof(expected));
        RecordCompare::expectSame(&found, wanted, mPath.c_str(), findings);
        ++mRecordsRead;
    }
}

void BinFileCheck::note(const vdr1::VDRData1& record) {
    if (mRecordsRead == 0) {
        mFirstRecord = record;
    }
    if (record.memoryAllocTimeoutInfo.itemName[0] != '\0') {
        mSlowAllocations.push_back({record.frameNumber, record.memoryAllocTimeoutInfo});
    }
}

}  // namespace demo
