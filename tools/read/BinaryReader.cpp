#include "tools/read/BinaryReader.h"

#include <cstring>
#include <string>

#include "tools/read/checkCounts.h"

namespace vdrdump {

BinaryReader::BinaryReader(ByteWindow& window, DamageLog& damage)
      : mWindow(window), mDamage(damage) {}

bool BinaryReader::next(Record& record) {
    const size_t available = mWindow.ensure(zk::kFrameRecordSize);
    record.offset = mWindow.offset();
    record.index = mIndex++;
    if (available < zk::kFrameRecordSize) {
        return available != 0 && cutRecord(record, available);
    }
    record.bytes = mWindow.data();
    record.known = sizeof(Layout);
    mWindow.consume(zk::kFrameRecordSize);
    checkCounts(record, mDamage);
    return true;
}

bool BinaryReader::cutRecord(Record& record, size_t size) {
    if (mDamage.add(Damage::CutRecord)) {
        mDamage.describe(record.offset, "a record of " + std::to_string(zk::kFrameRecordSize) +
                                                " bytes, found the last " + std::to_string(size) +
                                                " of the file");
    }
    std::memset(mCut, 0, sizeof(mCut));
    std::memcpy(mCut, mWindow.data(), size);
    mWindow.consume(size);
    record.bytes = mCut;
    record.known = std::min(size, sizeof(Layout));
    checkCounts(record, mDamage);
    return size >= sizeof(Layout::frameNumber);
}

}  // namespace vdrdump
