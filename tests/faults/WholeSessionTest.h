#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

#include "platform/host/ClockControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {

// A short camera session in which everything that writes or keeps a frame has something to do, with
// recording on, played as often as a test likes: what it leaves behind shows what a fault did to
// it.
class WholeSessionTest : public RecorderTest {
protected:
    static constexpr size_t kSamplerFiles = 17;
    static constexpr uint32_t kLostFrame = 15;  // so many lines exceed a stream's buffer
    static constexpr uint32_t kDumpingFrame = kLostFrame + 30;
    static constexpr uint32_t kPhotoFrame = 47;
    static constexpr uint32_t kFrames = kPhotoFrame;  // odd: the end of the session appends one

    // By name: "bin" and "text" are the contents of the two files, "files" and "fds" how many
    // there are of both kinds and open in this process, "maps" the shared buffers that are mapped,
    // "errors" the lines of the log.
    using Outcome = std::map<std::string, std::string>;

    WholeSessionTest() {
        freshDevice();
        mWhole = playSession();
        freshDevice();
    }
    ~WholeSessionTest() override { freshDevice(); }

    // No recorder and no files; the next session makes a recorder.
    void freshDevice() {
        mGate->open();
        destroyRecorder();
        mGate.emplace();
        removeDumps();
        host::forgetPromises();
        switchRecordingOn();
        forgetLog();
        mDay = 14;
    }

    // Names of the next session's files.
    std::string binFile() const { return fileName() + ".bin"; }
    std::string textFile() const { return fileName() + "_00000015.txt"; }

    Outcome playSession() {
        const uint64_t now = kNow + (mDay - 14) * 86400000000U;
        host::setWallClock(now);
        openSession();
        // The sampler has opened its files and sleeps from here on.
        EXPECT_TRUE(mGate->waitForSleep(1));
        completeFrames(1, kLostFrame - 5);
        announceLoss(kLostFrame, now);
        completeFrames(kLostFrame - 4, kDumpingFrame);
        host::waitForThreadPool();  // the writer has ended
        completeFrames(kDumpingFrame + 1, kPhotoFrame - 1);
        Outcome outcome;
        outcome["livePhoto"] = takePhoto();
        closeSession();
        outcome["settlement"] = settlement(now);
        outcome["bin"] = files(kBinFolder)[binFile()];
        outcome["text"] = files(kLossFolder)[textFile()];
        outcome["files"] = std::to_string(files(kBinFolder).size() + files(kLossFolder).size());
        std::string& errors = outcome["errors"];
        for (const std::string& error : transcript("E ")) {
            errors += error.substr(std::min(error.find("VDR::"), error.size())) + '\n';
        }
        using Entries = std::filesystem::directory_iterator;
        outcome["fds"] = std::to_string(std::distance(Entries("/proc/self/fd"), Entries()));
        std::ifstream maps("/proc/self/maps");
        const std::string mapped(std::istreambuf_iterator<char>(maps), {});
        outcome["maps"] = mapped.find("memfd:buffer") == std::string::npos ? "" : "left";
        removeDumps();
        forgetLog();
        ++mDay;
        return outcome;
    }

    static void expectSame(const Outcome& actual, const Outcome& expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (auto a = actual.begin(), e = expected.begin(); a != actual.end(); ++a, ++e) {
            EXPECT_TRUE(*a == *e) << a->first << ":\n" << a->second;
        }
    }

    std::optional<SleepGate> mGate{std::in_place};
    Outcome mWhole;  // of a session without a fault

private:
    std::string fileName() const { return "VIDEO_DEBUG_202311" + std::to_string(mDay) + "_221320"; }

    // The reply, and what is in the buffer.
    std::string takePhoto() {
        std::string reply;
        recorder().RegisterCamDataCb([&reply](uint32_t, const std::string& text) { reply = text; });
        Frame photo = frame(kPhotoFrame);
        recorder().CacheDataForLivePhoto(kPhotoFrame);
        photo.done();
        recorder().DoneDataForLivePhoto(kPhotoFrame);
        recorder().VDRReport(0);
        const std::string buffer = takeLivePhoto(kPhotoFrame, kPhotoFrame, kFrameRecordSize);
        recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
        return reply + buffer;
    }

    unsigned mDay = 14;  // of November: one session a day
};

}  // namespace zk::test
