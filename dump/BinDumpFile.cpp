#include "dump/BinDumpFile.h"

#include <cstdlib>
#include <ctime>

#include "platform/BoundedMemory.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Properties.h"

namespace zk {

BinDumpFile::BinDumpFile(SpinLock& dataPoolLock)
      : mPreviewRecordStatus(
                property_get_int32("vendor.camera.debug.VideoDataRecorderPreviewStatus", 0) != 0),
        mDataPoolLock(dataPoolLock),
        mBinFileBuffer(static_cast<uint8_t*>(std::malloc(kStagedRecords * kFrameRecordSize))) {
    if (mBinFileBuffer == nullptr) {
        VDR_LOGE("VDR::failed to alloc VDR bin file buffer!");
    }
}

BinDumpFile::~BinDumpFile() {
    std::free(mBinFileBuffer);
}

void BinDumpFile::setBinFile() {
    if (!mPreviewRecordStatus) {
        return;
    }
    timeval now{};
    tm local{};
    if (platform::getTimeOfDay(&now) != 0 || localtime_r(&now.tv_sec, &local) == nullptr) {
        return;
    }
    char path[kPathSize] = {};
    if (snprintf_s(path, kPathSize, kPathSize - 1,
                   "/data/vendor/camera/VIDEO_DEBUG_%04d%02d%02d_%02d%02d%02d.bin",
                   local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min, local.tm_sec) < 0) {
        VDR_LOGE("VDR::setBinFile, snprintf_s func got error");
    }
    path[kPathSize - 1] = '\0';
    const SpinLockGuard guard(mDataPoolLock);
    memcpy_s(mBinFileName, kPathSize, path, kPathSize);
}

void BinDumpFile::dumpDataToBinFile(const void* record) {
    mDataPoolLock.assertHeld();
    uint8_t* place = mBinFileBuffer == nullptr
                             ? nullptr
                             : mBinFileBuffer + mBinRecordCount * kFrameRecordSize;
    if (memcpy_s(place, kFrameRecordSize, record, kFrameRecordSize) != 0) {
        VDR_LOGE("VDR::dumpDataToBinFile, memcpy_s fail!");
        return;
    }
    if (++mBinRecordCount == kStagedRecords) {
        saveDataToBinFile(mBinFileName, mBinFileBuffer, kStagedRecords * kFrameRecordSize);
        mBinRecordCount = 0;
    }
}

void BinDumpFile::appendStaged() {
    if (!mPreviewRecordStatus) {
        return;
    }
    frameData staged;
    char path[kPathSize];
    uint32_t size = 0;
    {
        const SpinLockGuard guard(mDataPoolLock);
        memcpy_s(path, kPathSize, mBinFileName, kPathSize);
        size = static_cast<uint32_t>(mBinRecordCount * kFrameRecordSize);
        if (size > 0) {
            memcpy_s(staged.bytes, kFrameRecordSize, mBinFileBuffer, size);
        }
        mBinRecordCount = 0;
    }
    saveDataToBinFile(path, staged.bytes, size);
}

void BinDumpFile::saveDataToBinFile(const char* path, const void* data, uint32_t size) {
    std::FILE* file = platform::openFile(path, "ab+");
    if (file == nullptr) {
        VDR_LOGE("VDR::saveDataToBinFile, %s open fail!", path);
        return;
    }
    const size_t written = platform::writeFile(data, size, file);
    if (written < size) {
        VDR_LOGE("VDR::saveDataToBinFile, %s write fail, ret=%d!", path, static_cast<int>(written));
    }
    platform::closeFile(file);
}

}  // namespace zk
