#include "demo/DropAnnouncer.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>

#include "platform/Clock.h"
#include "platform/host/MonitoringService.h"

namespace demo {
namespace {

constexpr std::chrono::seconds kLongestWait(2);

using Future = std::shared_future<zk::VdrSyncCode>;

LossForecast::Answer answerOf(const Future& future, std::chrono::steady_clock::time_point limit) {
    if (future.wait_until(limit) != std::future_status::ready) {
        return LossForecast::Answer::kPending;
    }
    return future.get() == zk::VDR_SYNC_DONE ? LossForecast::Answer::kDone
                                             : LossForecast::Answer::kLimited;
}

}  // namespace

void DropAnnouncer::announce(uint32_t frame) {
    uint64_t timeStamp = zk::platform::wallClockMicroseconds();
    if (!mDrops.empty()) {
        timeStamp = std::max(timeStamp, mDrops.back().timeStamp + 1);  // it identifies the drop
    }
    Future future = zk::SyncManager::getInstance()->getFuture(timeStamp);
    mDrops.push_back({frame, timeStamp, std::move(future), LossForecast::Answer::kPending});
    auto& service = zk::host::MonitoringService::instance();
    service.announceFrameDrop(timeStamp, frame);
    service.waitUntilDelivered();
    mForecast.announced(timeStamp, frame);
}

void DropAnnouncer::awaitAnswers(Findings& findings) {
    const auto limit = std::chrono::steady_clock::now() + kLongestWait;
    for (Drop& drop : mDrops) {
        drop.answer = answerOf(drop.future, limit);
        zk::SyncManager::getInstance()->forget(drop.timeStamp);
        const LossForecast::Answer expected = mForecast.answer(drop.timeStamp);
        findings.expect(mForecast.allows(drop.timeStamp, drop.answer),
                        "the promise of frame %" PRIu32 " is %s, it should be %s", drop.frame,
                        inWords(drop.answer), inWords(expected));
    }
}

const char* DropAnnouncer::inWords(LossForecast::Answer answer) {
    switch (answer) {
        case LossForecast::Answer::kDone:
            return "settled with 1 (done)";
        case LossForecast::Answer::kLimited:
            return "settled with 0 (limited)";
        case LossForecast::Answer::kPending:
            break;
    }
    return "still pending";
}

}  // namespace demo
