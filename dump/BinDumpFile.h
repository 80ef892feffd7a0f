#pragma once

#include <cstddef>
#include <cstdint>

#include "base/SpinLock.h"
#include "records/frameData.h"

namespace zk {

// The binary dump file: every reported record, 4096 bytes each, nothing else. Records are staged
// and appended two at a time; the file is open during an append only. Recording is switched by
// "vendor.camera.debug.VideoDataRecorderPreviewStatus", read once, at construction. Any thread; one
// that reports waits for another's append, and nobody else does.
class BinDumpFile {
public:
    // Without memory for staging no record is written.
    BinDumpFile();
    ~BinDumpFile();
    BinDumpFile(const BinDumpFile&) = delete;
    BinDumpFile& operator=(const BinDumpFile&) = delete;

    bool isOn() const { return mPreviewRecordStatus; }
    // Names the file of a new camera session after the local time. Where the clock or the
    // conversion fails, the last name stays.
    void setBinFile();

    // One thread's turn to report, in which records are staged in the order of the file. Takes the
    // file's lock, which comes before the lock of whoever owns the records; its end appends what
    // is complete, so it must outlive that lock.
    class Turn {
    public:
        explicit Turn(BinDumpFile& file) : mFile(file), mGuard(file.mBinFileLock) {}
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        void stage(const void* record) {
            mFile.mBinFileLock.assertHeld();
            mFile.dumpDataToBinFile(record);
        }

    private:
        BinDumpFile& mFile;
        const SpinLockGuard mGuard;
    };

    // Appends what is staged: none or one record. With none the file is still opened, and so
    // created.
    void appendStaged();

private:
    static constexpr size_t kStagedRecords = 2;
    static constexpr size_t kPathSize = 125;  // bytes, with the NUL

    void dumpDataToBinFile(const void* record) VDR_REQUIRES(mBinFileLock);
    // Appends so many bytes of what is staged, and empties the stage.
    void saveDataToBinFile(uint32_t size) VDR_REQUIRES(mBinFileLock);

    const bool mPreviewRecordStatus;

    SpinLock mBinFileLock;  // held while the disk is busy: no camera thread waits for it but to
                            // report
    uint8_t* const mBinFileBuffer VDR_PT_GUARDED_BY(mBinFileLock);  // room for two; may be null
    size_t mBinRecordCount VDR_GUARDED_BY(mBinFileLock) = 0;        // staged, 0 to 2

    SpinLock mBinFileNameLock;  // apart, so that a session opens while the disk is busy
    char mBinFileName[kPathSize] VDR_GUARDED_BY(mBinFileNameLock) = {};
};

}  // namespace zk
