#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/SpinLock.h"
#include "sysstatus/SysStatusCollection.h"

namespace zk {

// The snapshot of the device's state and the sampler that renews it once a second, on a thread of
// its own with all signals masked: one at most. Any thread; nothing but copies and additions
// happens under a lock, and nobody waits for the sampler, which ends within about a second.
//
//   idle ──Init──> running ──UnInit──> stopping ──(looks, and closes its files)──> idle
//     ^              │  ^───────Init───────┘  the thread goes on with a cleared snapshot
//     └─(no thread)──┘
class SystemStatus {
public:
    SystemStatus() = default;
    ~SystemStatus() { tellToStop(); }
    SystemStatus(const SystemStatus&) = delete;
    SystemStatus& operator=(const SystemStatus&) = delete;

    // Clears the snapshot and starts the sampler, unless it is meant to run already. Where no
    // thread can be made it says so, and the next call tries again.
    void SystemStatusInit(int32_t sceneMode);
    // Tells the sampler to stop, and says so where it was meant to run.
    void SystemStatusUnInit();
    // Likewise without a word, for the end of the process.
    void tellToStop() { mShared->mSysStatusInited = false; }

    void GetSystemStatus(SysStatusCollection& out);

    void SnapshotCountAddOne();
    // A video recording starts or ends; wall-clock seconds. The end adds the seconds between.
    void startVideo(int64_t now) { mVideoStartTime.store(now, std::memory_order_relaxed); }
    void endVideo(int64_t now);

private:
    // What the sampler's thread uses too, and keeps for as long as it runs.
    struct Shared {
        std::atomic<bool> mSysStatusInited{false};  // the sampler is meant to run

        SpinLock mSysStatusLock;
        SysStatusCollection mSysStatusCollection VDR_GUARDED_BY(mSysStatusLock){};

        SpinLock mSysStatusTaskLock;
        // A thread runs or is being made. Whoever sets it makes the thread; the thread clears it
        // as its last step, unless it is meant to run again by then.
        bool mThreadStatus VDR_GUARDED_BY(mSysStatusTaskLock) = false;
    };

    // 0, or the error number for which there is no thread.
    int startThread();
    // The thread's body, from taking over its share of `Shared` to the end.
    static void* runSampler(void* shared);
    // One run, with files of its own.
    static void SystemStatusProcess(Shared& shared);
    static bool staysIdle(Shared& shared);

    std::atomic<int64_t> mVideoStartTime{0};  // wall-clock seconds
    const std::shared_ptr<Shared> mShared = std::make_shared<Shared>();
};

}  // namespace zk
