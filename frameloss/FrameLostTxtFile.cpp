#include "frameloss/FrameLostTxtFile.h"

#include <cstring>
#include <ctime>

#include "platform/BoundedMemory.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "records/makeFrameContent.h"

// Readers of the log know these messages under the name of the worker pool's task.
#define VDR_LOG_WRITER(priority, format, ...) \
    VDR_LOG_AS("operator()", priority, "VDR::writeTxtForPreviewFrameLost, " format, ##__VA_ARGS__)

namespace zk {
namespace {

constexpr mode_t kEverybody = 0777;
constexpr uint64_t kMicrosecondsPerSecond = 1000000;

}  // namespace

FrameLostTxtFile::FrameLostTxtFile(uint64_t lostTimeStamp, uint32_t lostFrame)
      : mLostTimeStamp(lostTimeStamp) {
    const auto seconds = static_cast<time_t>(lostTimeStamp / kMicrosecondsPerSecond);
    tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        return;
    }
    if (snprintf_s(mPath, kPathSize, kPathSize - 1,
                   "/data/vendor/camera_frame_lost/"
                   "VIDEO_DEBUG_%04d%02d%02d_%02d%02d%02d_%08d.txt",
                   local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min, local.tm_sec, static_cast<int>(lostFrame)) < 0) {
        VDR_LOG_WRITER(kLogError, "snprintf_s func got error");
        mPath[0] = '\0';
    }
}

bool FrameLostTxtFile::writeTxtForPreviewFrameLost(int32_t vdrLevel,
                                                   RingQueue<FrameStock::Place>& frames,
                                                   FrameLossLimit& limit) const {
    if (mPath[0] == '\0') {
        return false;
    }
    std::FILE* file = platform::openDumpFile(mPath, "w");
    if (file == nullptr) {
        logOpenFailure();
        return false;
    }
    writeLines(vdrLevel, frames, limit, file);
    VDR_LOG_WRITER(kLogInfo, "%s write succ, lostTimeStamp=%llu!", mPath,
                   static_cast<unsigned long long>(mLostTimeStamp));
    // The file itself, not whatever has its name by then.
    const int fd = platform::duplicate(file);
    if (platform::closeFile(file) != 0) {
        logWriteFailure(-1);  // buffered lines are written at last
    }
    if (platform::changeModeAndClose(fd, kEverybody) != 0) {
        VDR_LOG_WRITER(kLogError, "chmod fail!");
    }
    return true;
}

void FrameLostTxtFile::writeLines(int32_t vdrLevel, RingQueue<FrameStock::Place>& frames,
                                  FrameLossLimit& limit, std::FILE* file) const {
    for (char line[kFrameRecordSize]; !frames.empty(); frames.pop_front()) {
        line[0] = '\0';
        makeFrameContent(vdrLevel, frames.front()->bytes, line);
        const size_t length = std::strlen(line);
        const size_t written = platform::writeFile(line, length, file);
        if (written < length) {
            logWriteFailure(static_cast<int>(written));
        }
        limit.countLine();
    }
}

void FrameLostTxtFile::logOpenFailure() const {
    if (mPath[0] != '\0') {
        VDR_LOG_WRITER(kLogError, "%s open fail!", mPath);
    }
}

void FrameLostTxtFile::logWriteFailure(int result) const {
    VDR_LOG_WRITER(kLogError, "%s write fail, ret=%d!", mPath, result);
}

}  // namespace zk
