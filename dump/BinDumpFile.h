#pragma once

#include <cstddef>
#include <cstdint>

#include "base/SpinLock.h"
#include "records/frameData.h"

namespace zk {

// The binary dump file: every reported record, 4096 bytes each, nothing else. Records are staged
// and appended two at a time; the file is open during an append only. Recording is switched by
// "vendor.camera.debug.VideoDataRecorderPreviewStatus", read once, at construction.
class BinDumpFile {
public:
    // `dataPoolLock` must outlive this. Without memory for staging no record is written.
    explicit BinDumpFile(SpinLock& dataPoolLock);
    ~BinDumpFile();
    BinDumpFile(const BinDumpFile&) = delete;
    BinDumpFile& operator=(const BinDumpFile&) = delete;

    // Any thread.
    bool isOn() const { return mPreviewRecordStatus; }
    // Names the file of a new camera session after the local time. Where the clock or the
    // conversion fails, the last name stays. Any thread.
    void setBinFile();
    // Stages one record and appends every second time. The caller holds the pool's lock.
    void dumpDataToBinFile(const void* record);
    // Appends what is staged: none or one record. With none the file is still opened, and so
    // created. Any thread.
    void appendStaged();

private:
    static constexpr size_t kStagedRecords = 2;
    static constexpr size_t kPathSize = 125;  // bytes, with the NUL

    static void saveDataToBinFile(const char* path, const void* data, uint32_t size);

    const bool mPreviewRecordStatus;
    SpinLock& mDataPoolLock;  // the pool's: staging follows the order of reports
    char mBinFileName[kPathSize] VDR_GUARDED_BY(mDataPoolLock) = {};
    uint8_t* const mBinFileBuffer VDR_PT_GUARDED_BY(mDataPoolLock);  // room for two; may be null
    size_t mBinRecordCount VDR_GUARDED_BY(mDataPoolLock) = 0;        // staged, 0 or 1
};

}  // namespace zk
