#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "benchmarks/SampleFrame.h"
#include "benchmarks/rows.h"
#include "frameloss/FrameLossHistory.h"
#include "frameloss/FrameLostTxtFile.h"
#include "platform/Files.h"
#include "records/makeFrameContent.h"
#include "testing/SteppedLine.h"

namespace zk::bench {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kBlocks = 80;
constexpr uint32_t kDumpedFrames = 31;
constexpr uint32_t kPostedRecords = 30;

Row line(const char* name, const char* baselineName, const vdr1::VDRData1& record, double atMost) {
    const auto run = [record](benchmark::State& state) {
        const frameData block = asBlock(record);
        char expected[kFrameRecordSize] = {};
        char text[kFrameRecordSize] = {};
        const bool fits = test::formatSteppedLine(record, expected);
        measure(state, [&](int64_t) {
            text[0] = '\0';
            makeFrameContent(1, block.bytes, text);
            benchmark::DoNotOptimize(text);
        });
        if (!fits || std::strcmp(text, expected) != 0) {
            state.SkipWithError("the line is not what the formats say");
        }
    };
    const auto stepped = [record](benchmark::State& state) {
        char text[kFrameRecordSize] = {};
        measure(state, [&](int64_t) {
            text[0] = '\0';
            test::formatSteppedLine(record, text);
            benchmark::DoNotOptimize(text);
        });
    };
    return {{name, run}, {baselineName, stepped}, atMost};
}

void writeFile(const fs::path& path, const char* mode, const void* data, size_t size) {
    std::FILE* file = std::fopen(path.c_str(), mode);
    if (file != nullptr) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
}

// The worker's part alone: what leads to it happens once per lost frame, on the camera thread.
Row dump(Device& device) {
    const fs::path path =
            device.folder().string() + kLossFolder + "/VIDEO_DEBUG_20231114_221320_00001234.txt";
    std::string finished;
    char text[kFrameRecordSize] = {};
    test::formatSteppedLine(typicalRecord(), text);
    for (uint32_t i = 0; i < kDumpedFrames; ++i) {
        finished += text;
    }
    const auto run = [path, size = finished.size()](benchmark::State& state) {
        const FrameLostTxtFile file(1700000000000000, 1234);
        FrameLossLimit limit;
        const frameData record = asBlock(typicalRecord());
        FrameStock stock;
        stock.reserve(kDumpedFrames);
        FrameLossHistory::Frames frames;
        frames.reserve(kDumpedFrames);
        measure(
                state, 1,
                [&] {
                    fs::remove(path);
                    for (uint32_t i = 0; i < kDumpedFrames; ++i) {
                        FrameStock::Place place = stock.take();
                        *place = record;
                        frames.push_back(std::move(place));
                    }
                },
                [&](int64_t) { file.writeTxtForPreviewFrameLost(1, frames, limit); });
        std::error_code error;
        if (fs::file_size(path, error) != size) {
            state.SkipWithError("the file is not complete");
        }
    };
    const auto bare = [path = path.parent_path() / "finished.txt",
                       finished](benchmark::State& state) {
        measure(
                state, 1, [&] { fs::remove(path); },
                [&](int64_t) { writeFile(path, "w", finished.data(), finished.size()); });
    };
    return {{"dump of 31 frames", run}, {"the finished bytes to a new file", bare}, 5};
}

void completeFrames(IVideoDataRecoder& recorder, uint32_t first, uint32_t count) {
    for (uint32_t number = first; number < first + count; ++number) {
        recorder.VDRProcessing(number);
        recorder.writeMaintain(number, tag::frameNumber, &number);
        recorder.VDRDone(number);
    }
}

// What two records cost when they are reported: staged, appended, cleared.
Row append(Device& device) {
    constexpr uint32_t kAppends = kBlocks / 2;
    IVideoDataRecoder& recorder = device.recordingRecorder();
    const auto run = [&recorder, path = device.binFile()](benchmark::State& state) {
        uint32_t first = 1000;
        writeFile(path, "w", "", 0);
        measure(
                state, kAppends,
                [&] {
                    fs::resize_file(path, 0);
                    first += kBlocks;
                    completeFrames(recorder, first, kBlocks);
                },
                [&](int64_t) {
                    recorder.VDRReport(0);
                    recorder.VDRReport(0);
                });
        if (fs::file_size(path) != kBlocks * kFrameRecordSize) {
            state.SkipWithError("the file is not complete");
        }
    };
    // Device paths: below the device's folder.
    const auto bare =
            [path = device.binFile().replace_filename("appended.bin")](benchmark::State& state) {
                const std::string devicePath = kBinFolder + std::string("/appended.bin");
                const std::vector<char> records(2 * kFrameRecordSize);
                writeFile(path, "w", "", 0);
                measure(
                        state, kAppends, [&] { fs::resize_file(path, 0); },
                        [&](int64_t) {
                            std::FILE* file = platform::openDumpFile(devicePath.c_str(), "ab+");
                            platform::writeFile(records.data(), records.size(), file);
                            platform::closeFile(file);
                        });
            };
    return {{"append of two records", run}, {"the same file calls", bare}, 1.2};
}

// An unnamed shared buffer with room for the records of a post.
class SharedMemory {
public:
    SharedMemory() : mFd(memfd_create("post", 0)) {
        if (ftruncate(mFd, kSize) != 0) {
            std::perror("ftruncate");
        }
    }
    ~SharedMemory() { close(mFd); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    static constexpr size_t kSize = kPostedRecords * kFrameRecordSize;

    int fd() const { return mFd; }

private:
    const int mFd;
};

Row post(Device& device) {
    IVideoDataRecoder& recorder = device.recorder();
    const auto run = [&recorder](benchmark::State& state) {
        const SharedMemory buffer;
        const std::string request = R"({"id":"shot-1","startFrame":1,"endFrame":30,"bufferSize":)" +
                                    std::to_string(SharedMemory::kSize) + "}";
        int64_t served = 0;
        recorder.RegisterCamDataCb([&served](uint32_t, const std::string& reply) {
            served += reply.find("\"state\" : 1") != std::string::npos ? 1 : 0;
        });
        completeFrames(recorder, 1, kPostedRecords);
        for (uint32_t number = 1; number <= kPostedRecords; ++number) {
            recorder.DoneDataForLivePhoto(number);
            recorder.VDRReport(number);
        }
        measure(
                state, 1, [] {},
                [&](int64_t) { recorder.PostDataForLivePhoto(buffer.fd(), request); });
        if (served != state.iterations()) {
            state.SkipWithError("a post was not served");
        }
        recorder.RegisterCamDataCb([](uint32_t, const std::string&) {});
    };
    const auto bare = [](benchmark::State& state) {
        const SharedMemory buffer;
        const std::vector<char> queue(SharedMemory::kSize, 'r');
        std::vector<char> records(SharedMemory::kSize);
        measure(
                state, 1, [] {},
                [&](int64_t) {
                    std::memcpy(records.data(), queue.data(), SharedMemory::kSize);
                    benchmark::ClobberMemory();
                    void* address = mmap(nullptr, SharedMemory::kSize, PROT_READ | PROT_WRITE,
                                         MAP_SHARED, buffer.fd(), 0);
                    std::memcpy(address, records.data(), SharedMemory::kSize);
                    munmap(address, SharedMemory::kSize);
                });
    };
    return {{"post of 30 records", run}, {"two copies and a mapping", bare}, 1.5};
}

}  // namespace

std::vector<Row> outputRows(Device& device) {
    return {line("typical line", "typical line formatted step by step", typicalRecord(), 0.12),
            line("full line", "full line formatted step by step", fullRecord(), 0), dump(device),
            append(device), post(device)};
}

}  // namespace zk::bench
