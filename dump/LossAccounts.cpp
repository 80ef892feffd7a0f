#include "dump/LossAccounts.h"

#include <utility>

namespace zk {

void LossAccounts::open(uint64_t timeStamp, Promise promise) {
    {
        const SpinLockGuard guard(mPmInfoLock);
        mPmInfoMap.try_emplace(timeStamp, PmInfoForFrameLost{std::move(promise), 0});
    }
    mLostTimeStamp = timeStamp;
}

LossAccounts::FileRequest LossAccounts::requestFile() {
    const SpinLockGuard guard(mPmInfoLock);
    FileRequest request{mLostTimeStamp, std::nullopt};
    if (const auto account = mPmInfoMap.find(request.lostTimeStamp); account != mPmInfoMap.end()) {
        request.count = ++account->second.count;
    }
    return request;
}

LossAccounts::Closing LossAccounts::finishFile(uint64_t timeStamp) {
    const SpinLockGuard guard(mPmInfoLock);
    Closing closing;
    const auto account = mPmInfoMap.find(timeStamp);
    if (account == mPmInfoMap.end()) {
        return closing;
    }
    // A file of the stop-time flush is not counted, so the count may wrap to 255 here.
    closing.count = --account->second.count;
    if (*closing.count == 0 && mNotifyFlagMap.erase(timeStamp) > 0) {
        closing.isSettled = true;
        closing.promise = std::move(account->second.promise);
        mPmInfoMap.erase(account);
    }
    return closing;
}

LossAccounts::Stop LossAccounts::stop(Promise& promise) {
    const SpinLockGuard guard(mPmInfoLock);
    const uint64_t timeStamp = mLostTimeStamp;
    const auto account = mPmInfoMap.find(timeStamp);
    if (account == mPmInfoMap.end()) {
        return Stop::kNothing;
    }
    if (account->second.count == 0) {
        promise = std::move(account->second.promise);
        mPmInfoMap.erase(account);
        return Stop::kSettled;
    }
    return mNotifyFlagMap.emplace(timeStamp, true).second ? Stop::kLeftToLastWriter
                                                          : Stop::kNothing;
}

}  // namespace zk
