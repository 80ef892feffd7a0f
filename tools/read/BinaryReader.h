#pragma once

#include "records/frameData.h"
#include "tools/read/ByteWindow.h"
#include "tools/read/DamageLog.h"
#include "tools/read/DumpReader.h"

namespace vdrdump {

// Reads binary dumps: blocks of 4096 bytes one behind the other and nothing else.
class BinaryReader : public DumpReader {
public:
    // Both must outlive this.
    BinaryReader(ByteWindow& window, DamageLog& damage);

    bool next(Record& record) override;

private:
    // What a write that came up short has left at the end.
    bool cutRecord(Record& record, size_t size);

    ByteWindow& mWindow;
    DamageLog& mDamage;
    uint64_t mIndex = 0;
    uint8_t mCut[zk::kFrameRecordSize];
};

}  // namespace vdrdump
