#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>

#include "platform/host/MonitoringService.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

// What the allocator holds back for each thread counts as in use.
constexpr size_t kBytesOfThreads = 32768;

// A short run by default.
unsigned sessionCount() {
    const char* text = std::getenv("VDR_SOAK_SESSIONS");
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 400;
}

size_t bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Camera sessions in which losses are announced, dumped and left pending in any order of events:
// the service announces while frames are completed, the pool writes, and the session ends
// somewhere in between.
class SoakTest : public RecorderTest {
protected:
    void playSession(uint32_t losses) {
        openSession();
        std::thread announcer([&] {
            for (uint32_t i = 0; i < losses; ++i) {
                host::MonitoringService::instance().announceFrameDrop(kNow + i, 20 + pick(60));
            }
        });
        completeFrames(11, 11 + pick(120));
        if (pick(2) == 0) {
            announcer.join();
            host::MonitoringService::instance().waitUntilDelivered();
        }
        closeSession();
        if (announcer.joinable()) {
            announcer.join();
            host::MonitoringService::instance().waitUntilDelivered();
            closeSession();  // what was announced behind the first one
        }
    }

    uint32_t pick(uint32_t below) {
        const std::lock_guard guard(mMutex);
        return static_cast<uint32_t>(mRandom()) % below;
    }

    std::mutex mMutex;
    std::minstd_rand mRandom{1};
};

TEST_F(SoakTest, SessionAfterSession_CompletesEveryLossAndKeepsNoMemory) {
    constexpr unsigned kWarmUp = 50;
    size_t least = SIZE_MAX;
    const unsigned sessions = sessionCount();
    for (unsigned session = 1; session <= sessions && !HasFailure(); ++session) {
        SCOPED_TRACE("session " + std::to_string(session));
        const uint32_t losses = session % 2 == 0 ? 1 : 3;
        playSession(losses);
        for (uint32_t i = 0; i < losses; ++i) {
            EXPECT_NE(settlement(kNow + i), "pending") << "loss " << i;
        }
        removeDumps();
        host::forgetPromises();
        host::MonitoringService::instance().reset();
        forgetLog();
        if (session >= kWarmUp) {
            const size_t bytes = bytesInUse();
            least = std::min(least, bytes);
            EXPECT_LT(bytes, least + kBytesOfThreads) << "however the session ended";
        }
    }
    RecordProperty("leastBytes", std::to_string(least));
    RecordProperty("bytesAfterLast", std::to_string(bytesInUse()));
}

TEST_F(SoakTest, EndOfASession_GivesBackWhatItsQueuesHeld) {
    play("open 11 stop");
    const size_t before = bytesInUse();
    openSession();
    frame(11).done();
    recorder().DoneDataForLivePhoto(11);
    closeSession();
    EXPECT_LT(bytesInUse(), before + kBytesOfThreads);
}

}  // namespace
}  // namespace zk::test
