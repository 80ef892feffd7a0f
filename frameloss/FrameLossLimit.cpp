#include "frameloss/FrameLossLimit.h"

#include "platform/Clock.h"
#include "platform/Log.h"

namespace zk {
namespace {

constexpr uint64_t kSecondsPerDay = 86400;
constexpr uint32_t kLinesPerDay = 1000;

}  // namespace

void FrameLossLimit::restart(uint64_t now) {
    mFrameLostRecordLastTime = now;
    mFrameLostRecordCount = 0;
}

bool FrameLossLimit::checkFrameLostRecordStatus(bool isHistoryExceeded) {
    const auto now = static_cast<unsigned long long>(platform::wallClockSeconds());
    const unsigned long long last = mFrameLostRecordLastTime;
    // The same second starts anew too, like a clock that was set back.
    if (now <= last) {
        VDR_LOGI(
                "VDR::checkFrameLostRecordStatus(), update frame lost record count, "
                "recordCount=%u, lastTime(%llu)>now(%llu)!",
                mFrameLostRecordCount.load(), last, now);
        restart(now);
    } else if (now - last >= kSecondsPerDay) {
        VDR_LOGI(
                "VDR::checkFrameLostRecordStatus(), update frame lost record count, "
                "recordCount=%u, lastTime(%llu)<=now(%llu)!",
                mFrameLostRecordCount.load(), last, now);
        restart(now);
    }
    if (const uint32_t count = mFrameLostRecordCount.load(); count >= kLinesPerDay) {
        VDR_LOGI(
                "VDR::checkFrameLostRecordStatus(), exceed 1000(%u) limit in one day, don't write "
                "txt file if frame lost!",
                count);
        return true;
    }
    if (isHistoryExceeded) {
        VDR_LOGI(
                "VDR::checkFrameLostRecordStatus(), exceed 100 limit, don't write txt file if "
                "frame lost!");
        return true;
    }
    VDR_LOGI(
            "VDR::checkFrameLostRecordStatus(), no exceed limit, recordCount=%u, lastTime(%llu), "
            "now(%llu)!",
            mFrameLostRecordCount.load(), last, now);
    return false;
}

}  // namespace zk
