#pragma once

#include <cstdint>
#include <future>
#include <vector>

#include "demo/Findings.h"
#include "demo/LossForecast.h"
#include "platform/SyncManager.h"

namespace demo {

// The component that detects dropped frames, announces them through the monitoring agency and
// holds the other end of each drop's promise. One thread.
class DropAnnouncer {
public:
    struct Drop {
        uint32_t frame;
        uint64_t timeStamp;
        std::shared_future<zk::VdrSyncCode> future;
        LossForecast::Answer answer;  // as received; valid after awaitAnswers
    };

    // Returns once the recorder has been told, so that every session runs alike.
    void announce(uint32_t frame);
    void frameDone(uint32_t frame) { mForecast.done(frame); }
    void recorderStopped() { mForecast.stopped(); }
    // Waits for all promises together, two seconds at most: some are never settled.
    void awaitAnswers(Findings& findings);

    const std::vector<Drop>& drops() const { return mDrops; }
    const LossForecast& forecast() const { return mForecast; }
    static const char* inWords(LossForecast::Answer answer);

private:
    LossForecast mForecast;
    std::vector<Drop> mDrops;
};

}  // namespace demo
