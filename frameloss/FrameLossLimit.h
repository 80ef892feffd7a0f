#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "dump/LossAccounts.h"

namespace zk {

// How much may be written about losses: 1000 lines a day, and nothing once a history has
// overflowed. Any thread; a check and the writers' counting may interleave.
class FrameLossLimit {
public:
    explicit FrameLossLimit(std::shared_ptr<LossAccounts> accounts);

    // The day starts, wall-clock seconds.
    void start(int64_t now) { mFrameLostRecordLastTime = static_cast<uint64_t>(now); }
    // True when a new loss must not be recorded. Starts a new day where one has passed.
    bool checkFrameLostRecordStatus(bool isHistoryExceeded);

private:
    void restart(uint64_t now);

    const std::shared_ptr<LossAccounts> mAccounts;
    std::atomic<uint64_t> mFrameLostRecordLastTime{0};  // of the last reset, wall-clock seconds
};

}  // namespace zk
