#include "dump/FrameLostTxtFile.h"

#include <cstring>
#include <ctime>
#include <utility>

#include "platform/BoundedMemory.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/OrnThreadManager.h"
#include "records/makeFrameContent.h"

namespace zk {
namespace {

constexpr size_t kPathSize = 125;  // bytes, with the NUL
constexpr mode_t kEverybody = 0777;
constexpr uint64_t kMicrosecondsPerSecond = 1000000;

// Owns all that it needs: the recorder may be gone before the worker pool comes to it.
struct TxtWriter {
    RingQueue<frameData> frames;
    uint32_t count;
    uint64_t lostTimeStamp;
    int32_t vdrLevel;
    std::shared_ptr<LossAccounts> accounts;

    void operator()() {
        const auto seconds = static_cast<time_t>(lostTimeStamp / kMicrosecondsPerSecond);
        tm local{};
        if (localtime_r(&seconds, &local) == nullptr) {
            return;
        }
        char path[kPathSize] = {};
        if (snprintf_s(path, kPathSize, kPathSize - 1,
                       "/data/vendor/camera_frame_lost/"
                       "VIDEO_DEBUG_%04d%02d%02d_%02d%02d%02d_%08d.txt",
                       local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                       local.tm_min, local.tm_sec, static_cast<int>(count)) < 0) {
            VDR_LOGE("VDR::writeTxtForPreviewFrameLost, snprintf_s func got error");
            return;
        }
        std::FILE* file = platform::openFile(path, "w");
        if (file == nullptr) {
            VDR_LOGE("VDR::writeTxtForPreviewFrameLost, %s open fail!", path);
            return;
        }
        for (char line[kFrameRecordSize]; !frames.empty(); frames.pop_front()) {
            line[0] = '\0';
            makeFrameContent(vdrLevel, frames.front().bytes, line);
            const size_t length = std::strlen(line);
            const size_t written = platform::writeFile(line, length, file);
            if (written < length) {
                VDR_LOGE("VDR::writeTxtForPreviewFrameLost, %s write fail, ret=%d!", path,
                         static_cast<int>(written));
            }
            accounts->countLine();
        }
        VDR_LOGI("VDR::writeTxtForPreviewFrameLost, %s write succ, lostTimeStamp=%llu!", path,
                 static_cast<unsigned long long>(lostTimeStamp));
        platform::closeFile(file);
        if (platform::changeMode(path, kEverybody) != 0) {
            VDR_LOGE("VDR::writeTxtForPreviewFrameLost, chmod fail!");
        }

        const LossAccounts::Closing closing = accounts->finishFile(lostTimeStamp);
        if (closing.count.has_value()) {
            VDR_LOGI("VDR::writeTxtForPreviewFrameLost, count=%u!", *closing.count);
        }
        if (closing.isSettled) {
            if (closing.promise != nullptr) {
                closing.promise->set_value(VDR_SYNC_DONE);
            }
            // The number has always been the path's address, and readers of the log know it so.
            VDR_LOGI("VDR::writeTxtForPreviewFrameLost, trigger promise, lostTimeStamp=%llu!",
                     static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(path)));
        }
    }
};

}  // namespace

FrameLostTxtFile::FrameLostTxtFile(int32_t vdrLevel, std::shared_ptr<LossAccounts> accounts)
      : mVdrLevel(vdrLevel), mAccounts(std::move(accounts)) {}

void FrameLostTxtFile::writeTxtForPreviewFrameLost(RingQueue<frameData> frames, uint32_t count,
                                                   uint64_t lostTimeStamp) const {
    OrnThreadManager::GetInstance()->enqueue(
            TxtWriter{std::move(frames), count, lostTimeStamp, mVdrLevel, mAccounts});
}

}  // namespace zk
