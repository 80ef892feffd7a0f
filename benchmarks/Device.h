#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>

#include "recorder/ZkaVideoDataRecoderImpl.h"

namespace zk::bench {

// A device in a temporary folder (TMPDIR says where) with a silent log, and two recorders with an
// open session on it. Their samplers sleep all the time, so that nothing runs beside what is
// measured.
class Device {
public:
    Device();
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // The shared library's; binary recording is off.
    IVideoDataRecoder& recorder() { return *mRecorder; }
    // Made from the library's objects, since the library's own reads the switch when it is
    // loaded; binary recording is on.
    IVideoDataRecoder& recordingRecorder() { return *mRecordingRecorder; }

    // A folder for files of the benchmarks' own, on the same file system.
    const std::filesystem::path& folder() const { return mRoot; }
    // Where the recorder on which recording is on writes.
    std::filesystem::path binFile() const;
    // Of both kinds.
    void removeDumps();

private:
    void sleepUntilTheEnd();

    std::filesystem::path mRoot;
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mIsEnding = false;
    IVideoDataRecoder* mRecorder;
    std::unique_ptr<ZkaVideoDataRecoderImpl> mRecordingRecorder;
};

inline constexpr char kBinFolder[] = "/data/vendor/camera";
inline constexpr char kLossFolder[] = "/data/vendor/camera_frame_lost";

}  // namespace zk::bench
