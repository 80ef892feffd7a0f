#pragma once

#include <set>

#include "testing/CheckedRecorder.h"
#include "testing/InputBytes.h"

namespace zk::test {

// Bytes played as any sequence of calls with arguments of any kind, on a device where anything may
// fail: the recorder keeps its promises all the same, and at either level. The first bytes say how
// it is loaded.
class Sequence : public CheckedRecorder {
public:
    Sequence(const uint8_t* bytes, size_t size);
    ~Sequence() override;

    // Fails the running test where something is wrong, and where none runs tells gtest.
    void play();

private:
    using S = Sequence;
    using Recorder = ZkaVideoDataRecoderImpl;
    static void (*const kSteps[35])(S&);

    void TestBody() override {}

    // Arguments, drawn from the bytes.
    uint8_t byte() { return mInput.byte(); }
    // A frame number near those of late, a special one, or any.
    uint32_t frameNumber();
    uint32_t tagId();
    // Ends with its memory; as long as the tag's field.
    std::vector<uint8_t> fieldFor(uint32_t tag);
    // One of a few, or null.
    void* fence();
    template <typename T>
    T* orNull(T* pointer) {
        return byte() % 16 == 0 ? nullptr : pointer;
    }

    // Steps of more than a call.
    void load(uint8_t kind);
    void reload(uint8_t kind);
    void write(void (Recorder::*operation)(uint32_t, uint32_t, const void*));
    void writeMaintains();
    void postAny();
    void registerCallback();
    void setAllocation();
    void manyFrames();
    void announce();
    void moveClock();
    void spoilFiles(uint8_t kind);
    void spoilServices(uint8_t kind);

    // Into a buffer of so many pages; without any, into no buffer.
    void post(const std::string& request, size_t pages);
    // Of what has been said since the last time.
    void checkLog();
    // When the recorder is gone.
    void checkFiles() const;
    void checkLosses();

    InputBytes mInput;
    int mLevel;
    bool mIsLate;            // text files are written when the recorder is gone; else at once
    uint32_t mFrame = 1000;  // numbers are drawn around it
    int mFramesLeft = 200;   // of manyFrames, so that no sequence takes for ever
    int mReloadsLeft = 2;
    std::set<uint64_t> mLosses;  // time stamps of announcements that get a promise
    bool mMayCutWrites = false;
    bool mMayLosePromises = false;
};

}  // namespace zk::test
