#pragma once

#include <cstdint>
#include <future>
#include <memory>
#include <utility>

#include "base/pinOperations.h"

namespace zk {

// How the recorder completes an announced frame drop.
enum VdrSyncCode : int32_t {
    VDR_SYNC_LIMITED = 0,  // a limit was reached, nothing is recorded for this drop
    VDR_SYNC_DONE = 1,     // its files are written, or the recorder was stopped
};

// Promises between those who announce a frame drop and the recorder, by the drop's time stamp in
// microseconds. Any thread. The order of the virtual operations is the binary interface.
class SyncManager {
public:
    using Promise = std::promise<VdrSyncCode>;

    static SyncManager* getInstance();

    // The announcer's end: valid once, for a time stamp whose promise exists or is created by it.
    virtual std::shared_future<VdrSyncCode> getFuture(uint64_t timeStamp) = 0;
    virtual void forget(uint64_t timeStamp) = 0;
    // (true when this call created the promise, the promise or null).
    virtual std::pair<bool, std::shared_ptr<Promise>> getPromise(uint64_t timeStamp) = 0;

protected:
    ~SyncManager() = default;
};
VDR_PIN_OPERATIONS(SyncManager, 0, &SyncManager::getFuture, &SyncManager::forget,
                   &SyncManager::getPromise);

}  // namespace zk
