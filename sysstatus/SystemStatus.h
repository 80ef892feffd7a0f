#pragma once

#include <atomic>
#include <cstdint>
#include <future>
#include <thread>

#include "base/SpinLock.h"
#include "sysstatus/SysStatusCollection.h"

namespace zk {

// The snapshot of the device's state and the sampler that renews it once a second, as a task on a
// thread of its own. Any thread; nothing but copies and additions happens under the snapshot's
// lock.
//
//   idle ──Init──> running ──UnInit──> stopping ──(next look at the flag)──> idle
//                     ^───────Init────────┘  the old task goes on with a cleared snapshot
class SystemStatus {
public:
    SystemStatus() = default;
    // Stops the sampler and waits for it, about a second at most.
    ~SystemStatus();
    SystemStatus(const SystemStatus&) = delete;
    SystemStatus& operator=(const SystemStatus&) = delete;

    // Clears the snapshot and starts the sampler, unless it is meant to run already. Where no
    // thread can be made the launcher's error escapes.
    void SystemStatusInit(int32_t sceneMode);
    // Tells the sampler to stop and does not wait.
    void SystemStatusUnInit();
    void GetSystemStatus(SysStatusCollection& out);

    void SnapshotCountAddOne();
    // A video recording starts or ends; wall-clock seconds. The end adds the seconds between.
    void startVideo(int64_t now) { mVideoStartTime.store(now, std::memory_order_relaxed); }
    void endVideo(int64_t now);

private:
    // The body of the task.
    void SystemStatusProcess();
    // Whether the task goes on. Deciding to leave and saying so are one step for
    // SystemStatusInit: it finds a task that will see the flag, or one that has left.
    bool staysAlive();

    std::atomic<bool> mSysStatusInited{false};  // the sampler is meant to run
    std::atomic<int64_t> mVideoStartTime{0};    // wall-clock seconds

    SpinLock mSysStatusLock;
    SysStatusCollection mSysStatusCollection VDR_GUARDED_BY(mSysStatusLock){};

    SpinLock mSamplerLock;  // held by a task for its whole run: one at a time

    SpinLock mSysStatusTaskLock;
    // A task runs or is being started, and has not decided to leave.
    bool mThreadStatus VDR_GUARDED_BY(mSysStatusTaskLock) = false;
    // The last thread to enter the launcher, until it has left it. One that comes back without
    // having left was thrown out by the launcher's error: there is no task then.
    std::thread::id mLauncher VDR_GUARDED_BY(mSysStatusTaskLock);
    // Launches are counted, so that a slow launcher does not store an older task over a newer.
    uint64_t mLaunches VDR_GUARDED_BY(mSysStatusTaskLock) = 0;
    uint64_t mStoredLaunch VDR_GUARDED_BY(mSysStatusTaskLock) = 0;
    // Last, so that it is gone before what the task uses: releasing it waits for the task.
    std::shared_future<void> mSysStatusTask VDR_GUARDED_BY(mSysStatusTaskLock);
};

}  // namespace zk
