#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "fuzz/InputBytes.h"
#include "tests/RecorderTest.h"

namespace zk::fuzz {

// Reads an input as a sequence of calls into a recorder and of what may happen to a device, plays
// it at one record level, and checks after each step what must hold whatever the caller does.
// Nothing depends on the order of threads: the sampler moves when the sequence says so, events come
// on the player's thread, and text files are written at once or, in some sequences, by the worker
// pool when the recorder is gone.
class SequencePlayer : public test::RecorderTest {
public:
    SequencePlayer(int level, InputBytes input);
    ~SequencePlayer() override;

    // What the recorder handed out, said and wrote, but for addresses and line numbers.
    std::string play();

private:
    using Step = void (*)(SequencePlayer&);
    static const std::vector<Step> kSteps;

    void TestBody() override {}

    // Calls whose effect the player keeps account of.
    void load();
    void reload();
    void initialize();
    void unInitialize();
    void take(uint32_t frameNumber);
    void complete(uint32_t frameNumber);
    void reportOldest(uint32_t frameNumber);
    // Into a buffer of so many pages; without any, into no buffer.
    void post(const std::string& request, size_t pages);
    // Calls with arguments of several parts.
    void writeMaintains();
    void postForLivePhoto();
    void registerCallback();
    void setAllocation();
    // What else happens.
    void manyFrames();
    void announce();
    void moveClock();
    void spoilFiles();
    void spoilServices();
    void moveSampler();

    // A frame number near those of late, a special one, or any.
    uint32_t frame();
    uint32_t tag();
    // Ends with its memory; as long as the tag's field.
    std::vector<uint8_t> fieldFor(uint32_t tag);
    template <typename T>
    T* orNull(T* pointer) {
        return mInput.byte() % 16 == 0 ? nullptr : pointer;
    }
    // Writes a field of a frame through the operation given.
    void write(void (ZkaVideoDataRecoderImpl::*operation)(uint32_t, uint32_t, const void*));

    // The sampler has come to rest. It may lag behind as long as nothing shows where it is.
    void awaitSampler();
    void checkPools();
    void checkLog();
    // What all dump files hold.
    std::string checkBinFiles();
    void noteTextFiles();

    void note(const std::string& text) { mTranscript += text + '\n'; }
    void note(uint64_t number) { note(std::to_string(number)); }
    void noteBytes(const void* bytes, size_t size);

    const int mLevel;
    InputBytes mInput;
    const bool mIsLate;  // text files are written when the recorder is gone
    std::string mTranscript;
    uint32_t mFrame = 1000;  // numbers are drawn around it
    int mFramesLeft = 200;   // of manyFrames, so that no sequence takes for ever
    int mReloadsLeft = 2;
    size_t mLateTasks = 0;
    size_t mPosted = 0;          // records, by the last post
    std::set<uint64_t> mStamps;  // of announcements

    // What must hold, as the sequence tells.
    std::set<uint32_t> mProcessing;
    size_t mDone = 0;
    bool mIsRecording = false;  // binary dump on
    bool mIsSubscribed = false;
    bool mIsBinFileNamed = false;
    size_t mStagedRecords = 0;
    size_t mAppendedRecords = 0;
    bool mAreFilesSpoiled = false;
    bool mMayLoseWrites = false;
    bool mMayLoseFiles = false;
    bool mIsClockBroken = false;
    bool mIsSamplerWanted = false;
    bool mIsSamplerAlive = false;
    int mSleeps = 0;  // that the sampler falls into
};

}  // namespace zk::fuzz
