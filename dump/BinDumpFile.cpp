#include "dump/BinDumpFile.h"

#include <cstdlib>
#include <ctime>

#include "platform/BoundedMemory.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Properties.h"

namespace zk {

BinDumpFile::BinDumpFile()
      : mPreviewRecordStatus(
                property_get_int32("vendor.camera.debug.VideoDataRecorderPreviewStatus", 0) != 0),
        mBinFileBuffer(static_cast<uint8_t*>(std::malloc(kStagedRecords * kFrameRecordSize))) {
    if (mBinFileBuffer == nullptr) {
        VDR_LOG_AS("ZkaVideoDataRecoderImpl", kLogError,
                   "VDR::failed to alloc VDR bin file buffer!");
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
    const SpinLockGuard guard(mBinFileNameLock);
    memcpy_s(mBinFileName, kPathSize, path, kPathSize);
}

BinDumpFile::Turn::~Turn() {
    mFile.mBinFileLock.assertHeld();
    if (mFile.mBinRecordCount == kStagedRecords) {
        mFile.saveDataToBinFile(kStagedRecords * kFrameRecordSize);
    }
}

void BinDumpFile::dumpDataToBinFile(const void* record) {
    uint8_t* place = mBinFileBuffer == nullptr
                             ? nullptr
                             : mBinFileBuffer + mBinRecordCount * kFrameRecordSize;
    if (memcpy_s(place, kFrameRecordSize, record, kFrameRecordSize) != 0) {
        VDR_LOGE("VDR::dumpDataToBinFile, memcpy_s fail!");
        return;
    }
    ++mBinRecordCount;
}

void BinDumpFile::appendStaged() {
    if (mPreviewRecordStatus) {
        const SpinLockGuard guard(mBinFileLock);
        saveDataToBinFile(static_cast<uint32_t>(mBinRecordCount * kFrameRecordSize));
    }
}

void BinDumpFile::saveDataToBinFile(uint32_t size) {
    mBinRecordCount = 0;
    char path[kPathSize];
    {
        const SpinLockGuard guard(mBinFileNameLock);
        memcpy_s(path, kPathSize, mBinFileName, kPathSize);
    }
    std::FILE* file = platform::openDumpFile(path, "ab+");
    if (file == nullptr) {
        VDR_LOGE("VDR::saveDataToBinFile, %s open fail!", path);
        return;
    }
    const size_t written = platform::writeFile(mBinFileBuffer, size, file);
    if (written < size) {
        VDR_LOGE("VDR::saveDataToBinFile, %s write fail, ret=%d!", path, static_cast<int>(written));
    }
    if (platform::closeFile(file) != 0) {
        VDR_LOGE("VDR::saveDataToBinFile, %s write fail, ret=%d!", path, -1);
    }
}

}  // namespace zk
