#include "sysstatus/SystemStatus.h"

#include <pthread.h>

#include <clocale>
#include <csignal>

#include "platform/BoundedMemory.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "sysstatus/SystemStatusReader.h"

namespace zk {
namespace {

constexpr uint32_t kPeriodMicroseconds = 1000000;
constexpr char kThreadName[] = "VDRSampler";  // as tools list the process's threads

}  // namespace

void SystemStatus::SystemStatusInit(int32_t sceneMode) {
    if (mShared->mSysStatusInited.exchange(true)) {
        return;
    }
    {
        const SpinLockGuard guard(mShared->mSysStatusLock);
        SysStatusCollection& snapshot = mShared->mSysStatusCollection;
        memset_s(&snapshot, sizeof(snapshot), 0, sizeof(snapshot));
        snapshot.sceneMode = static_cast<uint16_t>(sceneMode);
    }
    mVideoStartTime.store(0, std::memory_order_relaxed);
    bool isAlive = false;
    {
        const SpinLockGuard guard(mShared->mSysStatusTaskLock);
        isAlive = mShared->mThreadStatus;
        mShared->mThreadStatus = true;
    }
    if (isAlive) {
        VDR_LOGD(
                "VDR::systemStatusInit, async task still alive, do not create task, "
                "mThreadStatus=%u!",
                isAlive);
        return;
    }
    VDR_LOGD("VDR::systemStatusInit, start async task, mSysStatusInited=%u, mThreadStatus=%u!",
             mShared->mSysStatusInited.load(), isAlive);
    if (const int error = startThread(); error != 0) {
        VDR_LOGE("VDR::systemStatusInit, no thread, ret=%d!", error);
    }
}

int SystemStatus::startThread() {
    auto* share = new std::shared_ptr<Shared>(mShared);
    sigset_t all;
    sigset_t usual;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &usual);  // the new thread inherits it
    pthread_t thread{};
    const int error = pthread_create(&thread, nullptr, runSampler, share);
    pthread_sigmask(SIG_SETMASK, &usual, nullptr);
    if (error != 0) {
        delete share;
        const SpinLockGuard guard(mShared->mSysStatusTaskLock);
        mShared->mThreadStatus = false;
        mShared->mSysStatusInited = false;
        return error;
    }
    pthread_setname_np(thread, kThreadName);
    pthread_detach(thread);
    return 0;
}

void* SystemStatus::runSampler(void* shared) {
    const std::unique_ptr<std::shared_ptr<Shared>> share(
            static_cast<std::shared_ptr<Shared>*>(shared));
    // The kernel writes numbers in no language of the process.
    const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    uselocale(plain);
    do {
        SystemStatusProcess(**share);
    } while (!staysIdle(**share));
    if (plain != nullptr) {
        uselocale(LC_GLOBAL_LOCALE);
        freelocale(plain);
    }
    return nullptr;
}

void SystemStatus::SystemStatusProcess(Shared& shared) {
    SystemStatusReader reader;
    while (shared.mSysStatusInited) {
        reader.read();
        {
            const SpinLockGuard guard(shared.mSysStatusLock);
            reader.publish(shared.mSysStatusCollection);
        }
        platform::sleepMicroseconds(kPeriodMicroseconds);
    }
    reader.close();
    VDR_LOGD("VDR::systemStatusProcess, quit async task, mSysStatusInited=%u!",
             shared.mSysStatusInited.load());
}

// Whoever wanted the sampler since the run's last look has found the thread alive and made none.
bool SystemStatus::staysIdle(Shared& shared) {
    const SpinLockGuard guard(shared.mSysStatusTaskLock);
    shared.mThreadStatus = shared.mSysStatusInited;
    return !shared.mThreadStatus;
}

void SystemStatus::SystemStatusUnInit() {
    if (mShared->mSysStatusInited.exchange(false)) {
        VDR_LOGD("VDR::SystemStatusUnInit, prepare to quit thread task, mSysStatusInited=%u!",
                 mShared->mSysStatusInited.load());
    }
}

void SystemStatus::GetSystemStatus(SysStatusCollection& out) {
    int error = 0;
    {
        const SpinLockGuard guard(mShared->mSysStatusLock);
        const SysStatusCollection& snapshot = mShared->mSysStatusCollection;
        error = memcpy_s(&out, sizeof(out), &snapshot, sizeof(snapshot));
    }
    if (error != 0) {
        VDR_LOGE("VDR::getCollectData, memcpy_s fail!");
    }
}

void SystemStatus::SnapshotCountAddOne() {
    const SpinLockGuard guard(mShared->mSysStatusLock);
    SysStatusCollection& snapshot = mShared->mSysStatusCollection;
    snapshot.snapshotCount = static_cast<uint16_t>(snapshot.snapshotCount + 1);
}

void SystemStatus::endVideo(int64_t now) {
    const int64_t start = mVideoStartTime.load(std::memory_order_relaxed);
    const SpinLockGuard guard(mShared->mSysStatusLock);
    mShared->mSysStatusCollection.videoRecordSeconds +=
            static_cast<uint32_t>(now) - static_cast<uint32_t>(start);
}

}  // namespace zk
