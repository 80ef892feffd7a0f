#include "sysstatus/SystemStatus.h"

#include <thread>
#include <utility>

#include "platform/BoundedMemory.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "sysstatus/SystemStatusReader.h"

namespace zk {
namespace {

constexpr uint32_t kPeriodMicroseconds = 1000000;

}  // namespace

SystemStatus::~SystemStatus() {
    mSysStatusInited = false;
}

void SystemStatus::SystemStatusInit(int32_t sceneMode) {
    uint64_t launch = 0;
    {
        const SpinLockGuard taskGuard(mSysStatusTaskLock);
        if (mSysStatusInited) {
            return;
        }
        {
            const SpinLockGuard guard(mSysStatusLock);
            memset_s(&mSysStatusCollection, sizeof(mSysStatusCollection), 0,
                     sizeof(mSysStatusCollection));
            mSysStatusCollection.sceneMode = static_cast<uint16_t>(sceneMode);
        }
        mVideoStartTime.store(0, std::memory_order_relaxed);
        mSysStatusInited = true;
        const bool isThrownOut = mLauncher == std::this_thread::get_id();
        if (mThreadStatus && !isThrownOut) {
            VDR_LOGD(
                    "VDR::systemStatusInit, async task still alive, do not create task, "
                    "mThreadStatus=%u!",
                    mThreadStatus);
            return;
        }
        VDR_LOGD("VDR::systemStatusInit, start async task, mSysStatusInited=%u, mThreadStatus=%u!",
                 mSysStatusInited.load(), mThreadStatus && !isThrownOut);
        mThreadStatus = true;
        mLauncher = std::this_thread::get_id();
        launch = ++mLaunches;
    }
    // No lock is held while launching, since the launcher's error would leave it locked.
    std::shared_future<void> task =
            std::async(std::launch::async, [this] { SystemStatusProcess(); }).share();
    {
        const SpinLockGuard taskGuard(mSysStatusTaskLock);
        mLauncher = {};
        if (launch > mStoredLaunch) {
            mStoredLaunch = launch;
            std::swap(task, mSysStatusTask);
        }
    }
    // What `task` holds now has left its loop and only closes its files; letting go waits for it.
}

bool SystemStatus::staysAlive() {
    const SpinLockGuard guard(mSysStatusTaskLock);
    if (!mSysStatusInited) {
        mThreadStatus = false;
    }
    return mThreadStatus;
}

void SystemStatus::SystemStatusProcess() {
    const SpinLockGuard samplerGuard(mSamplerLock);
    SystemStatusReader reader;
    while (staysAlive()) {
        reader.read();
        {
            const SpinLockGuard guard(mSysStatusLock);
            reader.publish(mSysStatusCollection);
        }
        platform::sleepMicroseconds(kPeriodMicroseconds);
    }
    reader.close();
    VDR_LOGD("VDR::systemStatusProcess, quit async task, mSysStatusInited=%u!",
             mSysStatusInited.load());
}

void SystemStatus::SystemStatusUnInit() {
    if (mSysStatusInited.exchange(false)) {
        VDR_LOGD("VDR::SystemStatusUnInit, prepare to quit thread task, mSysStatusInited=%u!",
                 mSysStatusInited.load());
    }
}

void SystemStatus::GetSystemStatus(SysStatusCollection& out) {
    int error = 0;
    {
        const SpinLockGuard guard(mSysStatusLock);
        error = memcpy_s(&out, sizeof(out), &mSysStatusCollection, sizeof(mSysStatusCollection));
    }
    if (error != 0) {
        VDR_LOGE("VDR::getCollectData, memcpy_s fail!");
    }
}

void SystemStatus::SnapshotCountAddOne() {
    const SpinLockGuard guard(mSysStatusLock);
    mSysStatusCollection.snapshotCount =
            static_cast<uint16_t>(mSysStatusCollection.snapshotCount + 1);
}

void SystemStatus::endVideo(int64_t now) {
    const int64_t start = mVideoStartTime.load(std::memory_order_relaxed);
    const SpinLockGuard guard(mSysStatusLock);
    mSysStatusCollection.videoRecordSeconds +=
            static_cast<uint32_t>(now) - static_cast<uint32_t>(start);
}

}  // namespace zk
