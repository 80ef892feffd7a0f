#include "demo/DropMonitor.h"

#include <chrono>

#include "platform/Clock.h"
#include "platform/host/MonitoringService.h"

namespace demo {
namespace {

constexpr std::chrono::seconds kLongestWait(2);

}  // namespace

void DropMonitor::watch(uint32_t frame, uint64_t age) {
    const bool isLate = age >= kLate;
    if (isLate && !mIsJammed) {
        announce(frame);
    }
    mIsJammed = isLate;
}

void DropMonitor::announce(uint32_t frame) {
    const uint64_t timeStamp = zk::platform::wallClockMicroseconds();
    mDrops.push_back({frame, timeStamp, zk::SyncManager::getInstance()->getFuture(timeStamp), {}});
    auto& service = zk::host::MonitoringService::instance();
    service.announceFrameDrop(timeStamp, frame);
    // Played faster than life, the frames after the loss would be through before it is known.
    service.waitUntilDelivered();
}

void DropMonitor::awaitAnswers() {
    const auto limit = std::chrono::steady_clock::now() + kLongestWait;
    for (Drop& drop : mDrops) {
        if (drop.future.wait_until(limit) == std::future_status::ready) {
            drop.answer = drop.future.get();
        }
        zk::SyncManager::getInstance()->forget(drop.timeStamp);
    }
}

}  // namespace demo
