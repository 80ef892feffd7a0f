#pragma once

#include "records/frameData.h"
#include "tools/read/BlockView.h"
#include "tools/read/ByteWindow.h"
#include "tools/read/DamageLog.h"
#include "tools/read/DumpReader.h"

namespace vdrdump {

// Reads binary dumps: blocks of 4096 bytes one behind the other and nothing else. Where a write
// came up short, what follows no longer begins at a multiple of that; the reader then looks for the
// next whole record, and passes what is none.
class BinaryReader : public DumpReader {
public:
    // Both must outlive this.
    BinaryReader(ByteWindow& window, DamageLog& damage);

    bool next(Record& record) override;
    NumbersAhead ahead() override;

private:
    // Bytes that are looked at to tell where a record begins.
    static constexpr size_t kLookAhead = (1 + NumbersAhead::kMost) * zk::kFrameRecordSize;

    // What is done with the bytes in front.
    struct Step {
        enum class Kind : uint8_t { Record, CutRecord, Pass, Zeros } kind;
        size_t size;
    };

    Step step(const BlockView& view) const;
    bool countsOn(const BlockView& view) const;
    Step outOfStep(const BlockView& view) const;
    // Where another record begins inside the block in front; its size where none does. `isNext`:
    // that block's number goes on from the last one.
    size_t findRecordInside(const BlockView& view, bool isNext) const;
    void skipZeros();
    void pass(size_t size);
    void reportPassed(const char* upTo);
    void giveCut(Record& record, size_t size, bool isLast);

    ByteWindow& mWindow;
    DamageLog& mDamage;
    uint64_t mIndex = 0;
    bool mIsFirst = true;
    uint32_t mLast = 0;  // frame number of the record that was given last
    uint64_t mPassed = 0;
    uint8_t mCut[zk::kFrameRecordSize];
};

}  // namespace vdrdump
