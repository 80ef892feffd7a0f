#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "recorder/ZkaVideoDataRecoderImpl.h"
#include "records/FieldTags.h"
#include "records/frameData.h"
#include "testing/SleepGate.h"

namespace zk::test {

using Lines = std::vector<std::string>;

// A device in a temporary folder with a recorder on it, and the words in which tests tell what
// happens there. The clock stands at kNow until moved; the sampler sleeps until woken; the log is
// kept and not printed. The recorder is made at its first use: set properties and faults before.
class RecorderTest : public testing::Test {
protected:
    static constexpr uint64_t kNow = 1700000000000000;  // microseconds, 2023-11-14 22:13:20 UTC

    RecorderTest();
    ~RecorderTest() override;

    // Before the first use of the recorder.
    void useLevel(int level);
    void switchRecordingOn();

    ZkaVideoDataRecoderImpl& recorder();
    // Destroys it and waits for its sampler's end; its next use makes a new one.
    void destroyRecorder();
    // How many threads of the sampler this process has. False where they do not end within ten
    // seconds.
    static size_t samplers();
    static bool waitForSamplersEnd();
    void openSession(int32_t sceneMode = 0) { recorder().initialize(1, sceneMode); }
    void closeSession() { recorder().unInitialize(); }

    // A frame that is being filled: frame(41).write(tag::zoomRatio, zoom).done();
    class Frame {
    public:
        Frame(IVideoDataRecoder& recorder, uint32_t number);
        // `value` is copied byte for byte and must have the size of the tag's field or element.
        template <typename T>
        Frame& write(uint32_t tag, const T& value) {
            mRecorder.writeMaintain(mNumber, tag, &value);
            return *this;
        }
        // Fills the fifteen stamps with what only this frame can hold.
        Frame& stamp();
        void done() { mRecorder.VDRDone(mNumber); }

    private:
        IVideoDataRecoder& mRecorder;
        const uint32_t mNumber;
    };
    // Takes a record and writes the frame number.
    Frame frame(uint32_t number) { return {recorder(), number}; }
    // Takes, numbers, completes and reports the frames from `first` to `last`.
    void completeFrames(uint32_t first, uint32_t last);
    // The oldest done record; empty where there is none.
    std::vector<uint8_t> oldestDone();
    uint32_t doneCount();
    // The frame number of a record; fails where another frame's stamp is in it.
    static uint32_t checkStamps(const void* record);

    // Waits until all of so many threads have come here with `arrivals`, which starts at zero,
    // again and again; short of a kernel object, so that they really go on together.
    static void meet(std::atomic<uint32_t>& arrivals, uint32_t threads);

    // Announces a dropped frame and waits until the recorder has taken it in.
    void announceLoss(uint64_t frameNumber, uint64_t timeStamp = kNow);
    // "pending", "limited" or "done".
    std::string settlement(uint64_t timeStamp = kNow);

    // The time stamp of the loss that play() announced last.
    uint64_t latestLoss() const { return kNow + mLosses - 1; }

    // Plays camera sessions written in words: "7" and "7-40" complete frames, "!41" announces the
    // loss of a frame, the first one at kNow and each a microsecond after the last, "open" and
    // "stop" are for the session, "pause" lets half a second pass.
    void play(const std::string& script);

    // What a live photo of the frames from `first` to `last` leaves in a shared buffer of `size`.
    std::string takeLivePhoto(uint32_t first, uint32_t last, size_t size);

    // Where a path of the device lies.
    std::filesystem::path onHost(const std::string& devicePath) const;
    void layFile(const std::string& devicePath, const std::string& content) const;
    std::string readFile(const std::string& devicePath) const;
    // Contents of the files in a folder by their names, after the worker pool has come to rest.
    // A link to a device counts as empty.
    std::map<std::string, std::string> files(const char* deviceFolder) const;
    // What the files of one kind hold, by the number that ends their names:
    // "41: 11-40 42-50; 100: 70-99".
    std::string dumps(const char* deviceFolder) const;
    // Empties both folders.
    void removeDumps() const;

    // The lines logged so far that contain `part`, whole: "I function<LINE>: text" under the
    // recorder's tag, with the priority's letter in front. LINE stands for the source line.
    static Lines transcript(const std::string& part);
    static size_t countLogged(const std::string& part) { return transcript(part).size(); }
    static void forgetLog();

    SleepGate mSleep;

private:
    uint64_t mLosses = 0;
    std::filesystem::path mRoot;
    std::unique_ptr<ZkaVideoDataRecoderImpl> mRecorder;
};

inline constexpr char kBinFolder[] = "/data/vendor/camera";
inline constexpr char kLossFolder[] = "/data/vendor/camera_frame_lost";

}  // namespace zk::test
