#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "fuzz/FuzzDevice.h"
#include "fuzz/InputBytes.h"
#include "recorder/ZkaVideoDataRecoderImpl.h"
#include "tests/SleepGate.h"

namespace zk::fuzz {

// Reads an input as a sequence of calls into a recorder and of what may happen to a device, plays
// it at one record level, and checks after each step what must hold whatever the caller does.
// Everything happens on one thread at a time: the sampler moves when the sequence says so, events
// are awaited, and text files are written at once or, in some sequences, after the last step.
class SequencePlayer {
public:
    SequencePlayer(FuzzDevice& device, int level, InputBytes input);
    ~SequencePlayer();
    SequencePlayer(const SequencePlayer&) = delete;
    SequencePlayer& operator=(const SequencePlayer&) = delete;

    // What the recorder handed out, said and wrote, but for addresses and line numbers.
    std::string play();

private:
    static constexpr size_t kBlocks = 80;

    // The library's life.
    void load();
    void unload();
    // After the last step.
    void finish();
    // The interface's operations, in its order.
    void initialize();
    void unInitialize();
    void writeMaintain();
    void writeMaintains();
    void processing();
    void done();
    void doneCount();
    void report();
    void info();
    void mp4Writable();
    void markWritable();
    void markUnWritable();
    void status();
    void checkPreview();
    void writeForLivePhoto();
    void cacheForLivePhoto();
    void doneForLivePhoto();
    void postForLivePhoto();
    void registerCallback();
    void setFence();
    void getFence();
    void systemStatus();
    void setFrame();
    void getFrame();
    void setAllocation();
    void getAllocation();
    void countSnapshot();
    // What else happens.
    void manyFrames();
    void announce();
    void strangeEvent();
    void moveClock();
    void spoilFiles();
    void spoilServices();
    void moveSampler();

    // A frame number near those of late, a special one, or any.
    uint32_t frame();
    uint32_t tag();
    // Ends with its memory; as long as the tag's field.
    std::vector<uint8_t> fieldFor(uint32_t tag);

    void take(uint32_t frameNumber);
    void complete(uint32_t frameNumber);
    void reportOldest(uint32_t frameNumber);
    // Into a buffer of so many pages; without any, into no buffer.
    void post(const std::string& request, size_t pages);
    // The sampler has come to rest after a call that may have started it.
    void awaitSampler();

    void checkPools();
    void checkLog();
    void checkBinFiles() const;
    void checkTextFiles() const;

    void note(const std::string& text) { mTranscript += text + '\n'; }
    void note(uint64_t number) { note(std::to_string(number)); }

    FuzzDevice& mDevice;
    const int mLevel;
    InputBytes mInput;
    const bool mIsLate;  // text files are written after the last step, by the worker pool
    std::string mTranscript;

    std::optional<test::SleepGate> mGate;
    std::unique_ptr<ZkaVideoDataRecoderImpl> mRecorder;
    uint32_t mFrame = 1000;  // numbers are drawn around it
    int mFramesLeft = 300;   // of manyFrames, so that no sequence takes for ever
    size_t mLateTasks = 0;
    std::set<uint64_t> mStamps;  // of announcements

    // What must hold, as the sequence tells.
    std::set<uint32_t> mProcessing;
    size_t mDone = 0;
    bool mIsRecording = false;  // binary dump on
    bool mIsBinFileNamed = false;
    size_t mStagedRecords = 0;
    size_t mAppendedRecords = 0;
    bool mMayLoseWrites = false;
    bool mMayLoseFiles = false;
    bool mIsClockBroken = false;
    bool mIsSamplerWanted = false;
    bool mIsSamplerAlive = false;
    int mSleeps = 0;
};

}  // namespace zk::fuzz
