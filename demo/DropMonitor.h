#pragma once

#include <cstdint>
#include <future>
#include <optional>
#include <vector>

#include "demo/SessionPlan.h"
#include "platform/SyncManager.h"

namespace demo {

// The camera stack's monitoring: it sees frames that are late, announces a dropped one through the
// monitoring agency, and holds the other end of the promise by which the recorder answers. One
// thread.
class DropMonitor {
public:
    static constexpr uint64_t kLate = 5 * kFrameTime;

    struct Drop {
        uint32_t frame;
        uint64_t timeStamp;  // microseconds since the epoch; names the drop
        std::shared_future<zk::VdrSyncCode> future;
        std::optional<zk::VdrSyncCode> answer;  // valid after awaitAnswers()
    };

    // To be told again and again of the oldest frame in the pipeline and of its age. Frames that
    // come late because they stood behind a late one count as the same drop.
    void watch(uint32_t frame, uint64_t age);
    // After the session. With a time limit: not every announcement is answered.
    void awaitAnswers();

    const std::vector<Drop>& drops() const { return mDrops; }

private:
    void announce(uint32_t frame);

    bool mIsJammed = false;
    std::vector<Drop> mDrops;
};

}  // namespace demo
