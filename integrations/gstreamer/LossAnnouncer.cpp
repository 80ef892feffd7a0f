#include "integrations/gstreamer/LossAnnouncer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/Clock.h"
#include "platform/host/MonitoringService.h"

namespace vdrgst {
namespace {

constexpr std::chrono::seconds kLongestWait(2);

}  // namespace

void LossAnnouncer::lost(uint32_t frame) {
    const std::optional<uint32_t> before = std::exchange(mLastLost, frame);
    if (before.has_value() && frame - *before < kFramesBetweenBursts) {
        return;
    }
    mLastTimeStamp = std::max(mLastTimeStamp + 1, zk::platform::wallClockMicroseconds());
    mAnnounced.push_back(
            {mLastTimeStamp, zk::SyncManager::getInstance()->getFuture(mLastTimeStamp)});
    ++mOutcomes.announced;
    auto& service = zk::host::MonitoringService::instance();
    service.announceFrameDrop(mLastTimeStamp, frame);
    // Behind a stall thirty frames may be through before the service comes to it.
    service.waitUntilDelivered();
}

void LossAnnouncer::awaitOutcomes() {
    const auto limit = std::chrono::steady_clock::now() + kLongestWait;
    for (const Announced& loss : std::exchange(mAnnounced, {})) {
        if (loss.future.wait_until(limit) != std::future_status::ready) {
            ++mOutcomes.unanswered;
        } else if (loss.future.get() == zk::VDR_SYNC_DONE) {
            ++mOutcomes.done;
        } else {
            ++mOutcomes.limited;
        }
        zk::SyncManager::getInstance()->forget(loss.timeStamp);
    }
    mLastLost.reset();
}

}  // namespace vdrgst
