#pragma once

#include <cstdint>
#include <future>
#include <optional>
#include <vector>

#include "platform/SyncManager.h"

namespace vdrgst {

// The monitoring service's part: tells the recorder of lost frames and counts how it kept the
// promises that hang on them. One thread at a time.
class LossAnnouncer {
public:
    // Losses that are not further apart would share a file: they are one burst.
    static constexpr uint32_t kFramesBetweenBursts = 30;

    struct Outcomes {
        uint32_t announced = 0;
        uint32_t done = 0;        // the recorder was through with it
        uint32_t limited = 0;     // refused: a limit was reached
        uint32_t unanswered = 0;  // after two seconds
    };

    // In the order of the numbers, before the frame is done. Announces the first frame of a burst
    // and returns once the recorder knows.
    void lost(uint32_t frame);
    // After the session's end, when all promises are to be kept. Waits with a limit.
    void awaitOutcomes();

    const Outcomes& outcomes() const { return mOutcomes; }

private:
    struct Announced {
        uint64_t timeStamp;
        std::shared_future<zk::VdrSyncCode> future;
    };

    std::optional<uint32_t> mLastLost;
    uint64_t mLastTimeStamp = 0;  // microseconds since the epoch; each names one loss
    std::vector<Announced> mAnnounced;
    Outcomes mOutcomes;
};

}  // namespace vdrgst
