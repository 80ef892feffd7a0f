#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "base/SpinLock.h"
#include "platform/SyncManager.h"

namespace zk {

// The pending completions: what each announcer of a frame loss still waits for, by the time stamp
// of its announcement (microseconds since the epoch). Any thread. Its messages are logged under
// the lock, so that their order is that of the counts.
//
//   announced ──files requested, ended──> ... ──stop──> completed, or, with files under way:
//                                                       completed by the last of them that ends
class LossCompletions {
public:
    using Promise = std::shared_ptr<SyncManager::Promise>;

    // An accepted loss waits for its completion from now on, and is the latest. `promise` may be
    // null. One that waits already keeps its promise.
    void add(uint64_t timeStamp, Promise promise);

    // A text file under way and the loss that it is counted for.
    struct File {
        uint64_t lostTimeStamp;  // of the latest loss: names the file
        bool isCounted;          // false where nobody waits for it
    };
    // A file of the latest loss will be under way: from now on a stop waits for it. Says nothing,
    // since whoever decides on a file holds a lock that camera threads wait for.
    File expectFile();
    // The same file is requested: counts it, and says so.
    void requestFile(const File& file);
    // The file is closed. After the stop the last one completes the loss. `path` is told.
    void finishFile(const File& file, const char* path);
    // The file could not be opened: the loss's count stays raised, but nobody waits for it.
    void abandonFile(const File& file, const char* path);

    // The recorder stops: completes every loss, the earliest first, or leaves that to the last of
    // its files under way. Returns the latest loss's time stamp, which names the file of the stop.
    uint64_t stop();

private:
    struct PmInfoForFrameLost {
        Promise promise;
        uint8_t count = 0;        // files requested and not finished, modulo 256, as it is told
        uint32_t underWay = 0;    // of these, the files that can still end
        bool notifyFlag = false;  // stopped: the last file under way completes it
    };
    using PmInfoMap = std::map<uint64_t, PmInfoForFrameLost>;

    static void complete(const PmInfoForFrameLost& loss);
    void completeByLastFile(PmInfoMap::iterator loss, const char* path) VDR_REQUIRES(mPmInfoLock);

    SpinLock mPmInfoLock;  // taken under the history's lock, or alone
    PmInfoMap mPmInfoMap VDR_GUARDED_BY(mPmInfoLock);
    uint64_t mLostTimeStamp VDR_GUARDED_BY(mPmInfoLock) = UINT32_MAX;  // of the latest loss
};

}  // namespace zk
