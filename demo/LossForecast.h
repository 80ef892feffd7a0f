#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <vector>

namespace demo {

// What must become of the announced drops: which frames land in which text file, and how each
// announcer is answered. Told what happens in a session, it works on frame numbers alone, which
// follow each other without gaps. One thread.
class LossForecast {
public:
    enum class Answer { kPending, kLimited, kDone };

    struct File {
        uint64_t timeStamp;  // names the file; of the latest recorded drop, microseconds
        uint32_t lostFrame;  // names the file too
        uint32_t firstFrame;
        uint32_t lastFrame;

        uint32_t lines() const { return lastFrame - firstFrame + 1; }
    };

    void announced(uint64_t timeStamp, uint32_t frame);
    void done(uint32_t frame);
    void stopped();

    const std::vector<File>& files() const { return mFiles; }
    Answer answer(uint64_t timeStamp) const;
    // Whether this answer is right too. A recorder that stops counts the files that are under way
    // right after it has ordered the last one: where that is written sooner, the count is off by
    // one and the drop never answered.
    bool allows(uint64_t timeStamp, Answer given) const;
    // A drop without its 30 successors: its file was ordered by the stop.
    bool wroteAtStop() const { return mWroteAtStop; }

private:
    uint32_t historyLength() const { return mLast - mFirst + 1; }
    void addFile(uint32_t lastFrame);
    void overflow();
    void completeFront();

    // The history: these frames, both included; empty where the first is past the last.
    uint32_t mFirst = 1;
    uint32_t mLast = 0;

    std::deque<uint32_t> mPending;  // drops without a file yet
    std::set<uint64_t> mLimited;
    std::optional<uint64_t> mLatest;
    bool mOverflowed = false;
    bool mStopped = false;
    bool mWroteAtStop = false;
    std::vector<File> mFiles;
};

}  // namespace demo
