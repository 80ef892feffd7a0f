#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>

#include "base/SpinLock.h"
#include "platform/SyncManager.h"

namespace zk {

// What is still owed for each announced frame loss, by the time stamp of its announcement
// (microseconds since the epoch), and the count of lines written. Any thread. Shared by the
// recorder and the writers on the worker pool, so that a late writer finds it alive.
class LossAccounts {
public:
    using Promise = std::shared_ptr<SyncManager::Promise>;

    // Opens the account of an accepted loss, unless there is one, and makes it the latest.
    void open(uint64_t timeStamp, Promise promise);

    struct FileRequest {
        uint64_t lostTimeStamp;        // of the latest accepted loss: names and credits the file
        std::optional<uint8_t> count;  // files now pending for it; empty where it has no account
    };
    // One more file is pending for the latest loss.
    FileRequest requestFile();

    struct Closing {
        std::optional<uint8_t> count;  // files still pending; empty where there is no account
        bool isSettled = false;        // the account is closed and `promise`, unless null, is due
        Promise promise;
    };
    // One file less is pending. The last one settles the account if the recorder has stopped.
    Closing finishFile(uint64_t timeStamp);

    enum class Stop { kNothing, kSettled, kLeftToLastWriter };
    // The recorder stops: settles the latest loss's account, or leaves that to its last writer.
    // `promise`, unless null, is due on kSettled.
    Stop stop(Promise& promise);

    uint64_t latestTimeStamp() const { return mLostTimeStamp; }

    // Lines written to text files since the last reset, modulo 65536.
    uint16_t recordCount() const { return mFrameLostRecordCount; }
    void countLine() { ++mFrameLostRecordCount; }
    void resetRecordCount() { mFrameLostRecordCount = 0; }

private:
    struct PmInfoForFrameLost {
        Promise promise;
        uint8_t count = 0;  // files requested and not finished, modulo 256
    };

    SpinLock mPmInfoLock;
    std::unordered_map<uint64_t, PmInfoForFrameLost> mPmInfoMap VDR_GUARDED_BY(mPmInfoLock);
    // Losses whose last pending writer settles them.
    std::unordered_map<uint64_t, bool> mNotifyFlagMap VDR_GUARDED_BY(mPmInfoLock);
    std::atomic<uint64_t> mLostTimeStamp{UINT32_MAX};
    std::atomic<uint16_t> mFrameLostRecordCount{0};
};

}  // namespace zk
