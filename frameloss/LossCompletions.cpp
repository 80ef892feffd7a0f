#include "frameloss/LossCompletions.h"

#include <utility>

#include "platform/Log.h"

namespace zk {
namespace {

constexpr char kDump[] = "dumpDataToFrameLostTxtFile";
constexpr char kWriter[] = "operator()";

}  // namespace

void LossCompletions::add(uint64_t timeStamp, Promise promise) {
    const SpinLockGuard guard(mPmInfoLock);
    mLostTimeStamp = timeStamp;
    mPmInfoMap.try_emplace(timeStamp, PmInfoForFrameLost{std::move(promise)});
}

LossCompletions::File LossCompletions::expectFile() {
    const SpinLockGuard guard(mPmInfoLock);
    const auto loss = mPmInfoMap.find(mLostTimeStamp);
    if (loss == mPmInfoMap.end()) {
        return {mLostTimeStamp, false};
    }
    ++loss->second.underWay;
    return {mLostTimeStamp, true};
}

void LossCompletions::requestFile(const File& file) {
    if (!file.isCounted) {
        return;
    }
    const SpinLockGuard guard(mPmInfoLock);
    if (const auto loss = mPmInfoMap.find(file.lostTimeStamp); loss != mPmInfoMap.end()) {
        ++loss->second.count;
        VDR_LOG_AS(kDump, kLogInfo, "VDR::dumpDataToFrameLostTxtFile, count:%d!",
                   loss->second.count);
    }
}

void LossCompletions::finishFile(const File& file, const char* path) {
    if (!file.isCounted) {
        return;
    }
    const SpinLockGuard guard(mPmInfoLock);
    if (const auto loss = mPmInfoMap.find(file.lostTimeStamp); loss != mPmInfoMap.end()) {
        --loss->second.count;
        VDR_LOG_AS(kWriter, kLogInfo, "VDR::writeTxtForPreviewFrameLost, count=%u!",
                   loss->second.count);
        completeByLastFile(loss, path);
    }
}

void LossCompletions::abandonFile(const File& file, const char* path) {
    if (!file.isCounted) {
        return;
    }
    const SpinLockGuard guard(mPmInfoLock);
    if (const auto loss = mPmInfoMap.find(file.lostTimeStamp); loss != mPmInfoMap.end()) {
        completeByLastFile(loss, path);
    }
}

void LossCompletions::complete(const PmInfoForFrameLost& loss) {
    if (loss.promise != nullptr) {
        loss.promise->set_value(VDR_SYNC_DONE);
    }
}

void LossCompletions::completeByLastFile(PmInfoMap::iterator loss, const char* path) {
    if (--loss->second.underWay > 0 || !loss->second.notifyFlag) {
        return;
    }
    complete(loss->second);
    mPmInfoMap.erase(loss);
    // The number has always been the path's address, and readers of the log know it so.
    VDR_LOG_AS(kWriter, kLogInfo,
               "VDR::writeTxtForPreviewFrameLost, trigger promise, lostTimeStamp=%llu!",
               static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(path)));
}

uint64_t LossCompletions::stop() {
    const SpinLockGuard guard(mPmInfoLock);
    for (auto loss = mPmInfoMap.begin(); loss != mPmInfoMap.end();) {
        if (loss->second.underWay == 0) {
            VDR_LOG_AS(kDump, kLogInfo,
                       "VDR::dumpDataToFrameLostTxtFile, flush now, trigger promise!");
            complete(loss->second);
            loss = mPmInfoMap.erase(loss);
            continue;
        }
        if (!loss->second.notifyFlag) {
            VDR_LOG_AS(kDump, kLogInfo,
                       "VDR::dumpDataToFrameLostTxtFile, record notifyFlag in flush!");
            loss->second.notifyFlag = true;
        }
        ++loss;
    }
    return mLostTimeStamp;
}

}  // namespace zk
