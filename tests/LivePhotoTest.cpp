#include <fcntl.h>
#include <json/reader.h>
#include <json/value.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "platform/host/DeviceControl.h"
#include "platform/host/LogControl.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Frames = std::vector<uint32_t>;
using Lines = std::vector<std::string>;

constexpr size_t kPage = 4096;

std::string requestFor(uint32_t start, uint32_t end, size_t bufferSize) {
    return R"({"id":"shot 1","startFrame":)" + std::to_string(start) + R"(,"endFrame":)" +
           std::to_string(end) + R"(,"bufferSize":)" + std::to_string(bufferSize) + "}";
}

// A shared-memory object full of 0xEE.
class Memory {
public:
    explicit Memory(size_t size) : mFd(memfd_create("buffer", MFD_CLOEXEC)) {
        const std::string filling(size, '\xEE');
        EXPECT_EQ(write(mFd, filling.data(), size), static_cast<ssize_t>(size));
    }
    ~Memory() { close(mFd); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    int fd() const { return mFd; }
    std::string content() const {
        std::string all(static_cast<size_t>(lseek(mFd, 0, SEEK_END)), '\0');
        EXPECT_EQ(pread(mFd, all.data(), all.size(), 0), static_cast<ssize_t>(all.size()));
        return all;
    }

private:
    const int mFd;
};

class LivePhotoTest : public RecorderTest {
protected:
    LivePhotoTest() { mSleep.open(); }

    // Opens a session whose replies are kept.
    void openListening() {
        openSession();
        recorder().RegisterCamDataCb([this](uint32_t code, std::string reply) {
            EXPECT_EQ(code, 80U);
            mReplies.push_back(std::move(reply));
        });
    }
    void cacheAndDone(uint32_t number) {
        frame(number);
        recorder().CacheDataForLivePhoto(number);
        recorder().DoneDataForLivePhoto(number);
        frame(number).done();
        recorder().VDRReport(0);
    }
    void queueFrames(uint32_t first, uint32_t last) {
        for (uint32_t number = first; number <= last; ++number) {
            cacheAndDone(number);
        }
    }
    // "1 id" as the last reply has them; "none" where there is no new reply.
    std::string post(int fd, const std::string& request) {
        mReplies.clear();
        recorder().PostDataForLivePhoto(fd, request);
        Json::Value reply;
        if (mReplies.size() != 1 || !Json::Reader().parse(mReplies[0], reply) ||
            reply.size() != 2) {
            return mReplies.empty() ? "none" : "no single reply";
        }
        return std::to_string(reply["state"].asInt()) + " " + reply["id"].asString();
    }
    // The frames that a request gets into a large buffer.
    Frames framesFor(uint32_t start, uint32_t end) {
        const Memory memory(181 * kPage);
        EXPECT_EQ(post(memory.fd(), requestFor(start, end, 181 * kPage)), "1 shot 1");
        const std::string content = memory.content();
        Frames frames;
        for (size_t at = 0; content[at + kPage - 1] == '\0'; at += kPage) {
            frames.push_back(frameNumberOf(&content[at]));
        }
        EXPECT_EQ(content.find_first_not_of('\xEE', frames.size() * kPage), std::string::npos);
        return frames;
    }

    Lines mReplies;
};

TEST_F(LivePhotoTest, RequestIsServedStepByStep) {
    openListening();
    host::setFirstAppFrameNumber(100);
    std::string expected;
    for (uint32_t number = 5; number <= 9; ++number) {
        frame(number);
        for (uint32_t tag = 2; tag < 9; ++tag) {
            const std::string value(512, static_cast<char>(number * 16 + tag));
            recorder().writeMaintain(number, tag, value.data());
        }
        recorder().CacheDataForLivePhoto(number);
        recorder().DoneDataForLivePhoto(number);
        recorder().VDRDone(number);
        const std::vector<uint8_t> record = oldestDone();
        if (number == 7 || number == 8) {
            expected.append(record.begin(), record.end());
        }
        recorder().VDRReport(0);
    }
    const Memory memory(3 * kPage);
    lseek(memory.fd(), 77, SEEK_SET);
    forgetLog();
    EXPECT_EQ(post(memory.fd(), requestFor(107, 108, 3 * kPage)), "1 shot 1");
    EXPECT_EQ(lseek(memory.fd(), 0, SEEK_CUR), 77);
    EXPECT_EQ(memory.content(), expected + std::string(kPage, '\xEE'));
    const std::string prefix = "D PostDataForLivePhoto<LINE>: VDR::PostDataForLivePhoto, ";
    EXPECT_EQ(transcript("PostDataForLivePhoto"),
              (Lines{prefix + "firstAppFrameNum=100, stratFrame=7, endFrame=8, bufferSize=12288, "
                              "id=shot 1!",
                     prefix + "pop out data, chiFrameNum=5!",
                     prefix + "pop out data, chiFrameNum=6!", prefix + "count=0, chiFrameNum=7!",
                     prefix + "count=1, chiFrameNum=8!", prefix + "mResultCamDataCb execute!",
                     prefix + "outStr: " + mReplies[0] +
                             ", returnState 1, id shot 1, munmapRet 0!"}));
}

TEST_F(LivePhotoTest, RangeWrapsAround) {
    struct Row {
        const char* name;
        uint32_t firstApp, start, end;
        Frames posted, left;
    };
    const Row rows[] = {
            {"middle", 0, 11, 12, {11, 12}, {11, 12, 13}},
            {"one", 0, 10, 10, {10}, {10, 11, 12, 13}},
            {"end beyond the queue", 0, 12, 99, {12, 13}, {12, 13}},
            {"end just before the start: none", 0, 11, 10, {}, {11, 12, 13}},
            {"end further before: all", 0, 11, 9, {11, 12, 13}, {11, 12, 13}},
            {"from 0 to the last number: none", 0, 0, UINT32_MAX, {}, {10, 11, 12, 13}},
            {"start beyond the queue empties it", 0, 14, 20, {}, {}},
            {"before the application's first frame", 20, 19, 25, {}, {}},
            {"application numbers wrap", 0xFFFFFFF0, 0xFFFFFFFB, 1, {11, 12, 13}, {11, 12, 13}},
    };
    openListening();
    for (const Row& row : rows) {
        queueFrames(10, 13);
        host::setFirstAppFrameNumber(row.firstApp);
        EXPECT_EQ(framesFor(row.start, row.end), row.posted) << row.name;
        host::setFirstAppFrameNumber(0);
        EXPECT_EQ(framesFor(0, UINT32_MAX - 1), row.left) << row.name;
        recorder().unInitialize();
    }
}

TEST_F(LivePhotoTest, QueueHoldsTheNewest180) {
    openListening();
    queueFrames(1, 180);
    EXPECT_EQ(countLogged("larger than 180"), 0U);
    queueFrames(181, 181);
    EXPECT_EQ(transcript("larger than 180"),
              (Lines{"D DoneDataForLivePhoto<LINE>: VDR::DoneDataForLivePhoto, "
                     "mOfflineVDRDataOut size larger than 180!"}));
    Frames newest(180);
    std::iota(newest.begin(), newest.end(), 2);
    EXPECT_EQ(framesFor(0, 1000), newest);
}

TEST_F(LivePhotoTest, StoreKeepsOneRecordPerPlaceOf180) {
    openListening();
    recorder().CacheDataForLivePhoto(5);  // nothing is being filled
    recorder().DoneDataForLivePhoto(5);
    frame(5);
    recorder().CacheDataForLivePhoto(5);
    frame(185);
    recorder().CacheDataForLivePhoto(185);
    recorder().DoneDataForLivePhoto(5);
    recorder().DoneDataForLivePhoto(365);
    EXPECT_EQ(framesFor(0, 1000), (Frames{185, 185}));
    frame(5).done();  // the completed record takes the place
    recorder().DoneDataForLivePhoto(185);
    EXPECT_EQ(framesFor(0, 1000), (Frames{185, 185, 5}));
}

TEST_F(LivePhotoTest, FieldsAreWrittenIntoTheStoredRecordOnly) {
    openListening();
    const uint32_t renumbered = 41;
    recorder().WriteMaintainForLivePhoto(7, 0, &renumbered);  // nothing is stored
    frame(7);
    recorder().CacheDataForLivePhoto(7);
    recorder().WriteMaintainForLivePhoto(7, 0, &renumbered);
    recorder().WriteMaintainForLivePhoto(7, 39, &renumbered);
    recorder().WriteMaintainForLivePhoto(7, 0, nullptr);
    recorder().DoneDataForLivePhoto(7);
    recorder().VDRDone(7);
    EXPECT_EQ(frameNumberOf(oldestDone().data()), 7U);
    EXPECT_EQ(framesFor(0, 1000), Frames{41});
    const std::string prefix =
            "E WriteMaintainForLivePhoto<LINE>: VDR::WriteMaintainForLivePhoto, ";
    EXPECT_EQ(transcript("WriteMaintainForLivePhoto"),
              (Lines{prefix + "tagId is wrong or data is nullptr, tagId=39, frameNumber=7!",
                     prefix + "tagId is wrong or data is nullptr, tagId=0, frameNumber=7!"}));
}

TEST_F(LivePhotoTest, ClosedRecorderStoresDoneFramesAndAnswersStateZero) {
    recorder().RegisterCamDataCb(
            [this](uint32_t, std::string reply) { mReplies.push_back(std::move(reply)); });
    frame(3).done();
    frame(4);
    recorder().CacheDataForLivePhoto(4);
    recorder().DoneDataForLivePhoto(3);
    EXPECT_EQ(post(-1, requestFor(0, 9, kPage)), "0 shot 1");
    EXPECT_EQ(countLogged("returnState 0, id shot 1, munmapRet -1!", 3), 1U);
    EXPECT_EQ(countLogged("firstAppFrameNum"), 0U);
    const uint32_t number = 3;
    recorder().WriteMaintainForLivePhoto(3, 0, &number);
    EXPECT_EQ(countLogged("VDR::WriteMaintainForLivePhoto, fun is nullptr, tagId=0, "
                          "frameNumber=3!",
                          6),
              1U);
    openSession();
    recorder().DoneDataForLivePhoto(3);
    recorder().DoneDataForLivePhoto(4);
    EXPECT_EQ(framesFor(0, 9), Frames{0}) << "no number either: no writer was bound";
}

TEST_F(LivePhotoTest, EndOfSessionForgetsRecordsAndKeepsTheCallback) {
    openListening();
    queueFrames(1, 3);
    recorder().unInitialize();
    recorder().DoneDataForLivePhoto(3);
    EXPECT_EQ(framesFor(0, 9), Frames{});
}

TEST_F(LivePhotoTest, CallbackStaysUntilReplaced_AlsoFromWithin) {
    openListening();
    const Memory memory(kPage);
    recorder().RegisterCamDataCb(nullptr);
    EXPECT_EQ(post(memory.fd(), requestFor(0, 9, kPage)), "1 shot 1");
    int calls = 0;
    recorder().RegisterCamDataCb([this, &calls](uint32_t, const std::string&) {
        recorder().RegisterCamDataCb([&calls](uint32_t, const std::string&) { calls += 10; });
        ++calls;
    });
    post(memory.fd(), requestFor(0, 9, kPage));
    post(memory.fd(), requestFor(0, 9, kPage));
    EXPECT_EQ(calls, 11);
    const std::string success = "D RegisterCamDataCb<LINE>: VDR::RegisterCamDataCb success!";
    EXPECT_EQ(transcript("RegisterCamDataCb"),
              (Lines{success, "E RegisterCamDataCb<LINE>: VDR::RegisterCamDataCb, func is nullptr",
                     success, success}));
}

// Every kind of descriptor, with two records (two pages) to post into three pages asked for.
struct Descriptor {
    const char* name;
    int (*open)(const std::string& file);
    size_t bufferSize;
    const char* reply;
    int munmapRet;
};

int sized(int fd, off_t size) {
    EXPECT_EQ(ftruncate(fd, size), 0);
    return fd;
}

class LivePhotoDescriptorTest : public LivePhotoTest,
                                public testing::WithParamInterface<Descriptor> {};

TEST_P(LivePhotoDescriptorTest, NothingFaults_AndTheReplyTellsTheOutcome) {
    const Descriptor& row = GetParam();
    openListening();
    queueFrames(1, 2);
    layFile("/buffer", std::string(2 * kPage, '\xEE'));
    const int fd = row.open(onHost("/buffer"));
    const off_t offset = lseek(fd, 3, SEEK_SET) == 3 ? 3 : lseek(fd, 0, SEEK_CUR);
    forgetLog();
    EXPECT_EQ(post(fd, requestFor(0, 9, row.bufferSize)), row.reply);
    const bool isReplied = row.reply[0] != 'n';
    EXPECT_EQ(countLogged("PostDataForLivePhoto"),
              isReplied ? (row.reply[0] == '1' ? 5U : 4U) : 0U);
    EXPECT_EQ(countLogged("munmapRet " + std::to_string(row.munmapRet) + "!"), isReplied ? 1U : 0U);
    const std::string sizes =
            ", apk apply size:" + std::to_string(row.bufferSize) + ", postQueue need size:8192!";
    EXPECT_EQ(countLogged(sizes, 6), row.reply[0] == '0' ? 1U : 0U);
    EXPECT_EQ(lseek(fd, 0, SEEK_CUR), offset);
    close(fd);
    EXPECT_EQ(framesFor(0, 9), (Frames{1, 2})) << "the records stay queued";
}

INSTANTIATE_TEST_SUITE_P(
        All, LivePhotoDescriptorTest,
        testing::Values(
                Descriptor{"RegularFile",
                           [](const std::string& file) { return open(file.c_str(), O_RDWR); },
                           3 * kPage, "1 shot 1", 0},
                Descriptor{"MemoryAsLong",
                           [](const std::string&) { return sized(memfd_create("m", 0), 8192); },
                           2 * kPage, "1 shot 1", 0},
                Descriptor{"MemoryShorterWithinThePage",
                           [](const std::string&) { return sized(memfd_create("m", 0), 4097); },
                           3 * kPage, "1 shot 1", 0},
                Descriptor{"MemoryShorter",
                           [](const std::string&) { return sized(memfd_create("m", 0), 4096); },
                           3 * kPage, "0 shot 1", 0},
                Descriptor{"MemoryEmpty", [](const std::string&) { return memfd_create("m", 0); },
                           3 * kPage, "0 shot 1", 0},
                Descriptor{"MemoryLonger",
                           [](const std::string&) { return sized(memfd_create("m", 0), 99999); },
                           3 * kPage, "1 shot 1", 0},
                Descriptor{"RequestTooSmall",
                           [](const std::string&) { return sized(memfd_create("m", 0), 99999); },
                           2 * kPage - 1, "0 shot 1", 0},
                Descriptor{"RequestOfNothing",
                           [](const std::string&) { return sized(memfd_create("m", 0), 99999); }, 0,
                           "0 shot 1", -1},
                Descriptor{"RequestOfFourGigabytes",
                           [](const std::string&) { return sized(memfd_create("m", 0), 8192); },
                           UINT32_MAX, "1 shot 1", 0},
                Descriptor{"ReadOnly",
                           [](const std::string& file) { return open(file.c_str(), O_RDONLY); },
                           3 * kPage, "0 shot 1", -1},
                Descriptor{"WriteOnly",
                           [](const std::string& file) { return open(file.c_str(), O_WRONLY); },
                           3 * kPage, "0 shot 1", -1},
                Descriptor{"Folder", [](const std::string&) { return open("/", O_RDONLY); },
                           3 * kPage, "0 shot 1", -1},
                Descriptor{"Zeros", [](const std::string&) { return open("/dev/zero", O_RDWR); },
                           3 * kPage, "0 shot 1", 0},
                Descriptor{"Pipe",
                           [](const std::string&) {
                               int ends[2];
                               EXPECT_EQ(pipe(ends), 0);
                               close(ends[0]);
                               return ends[1];
                           },
                           3 * kPage, "0 shot 1", -1},
                Descriptor{"Socket",
                           [](const std::string&) { return socket(AF_UNIX, SOCK_STREAM, 0); },
                           3 * kPage, "0 shot 1", -1},
                Descriptor{"Closed", [](const std::string&) { return -1; }, 3 * kPage, "none", 0}),
        [](const auto& test) { return std::string(test.param.name); });

TEST_F(LivePhotoTest, FailedMappingWithNothingToCopy_IsStateOne) {
    openListening();
    EXPECT_EQ(post(Memory(kPage).fd(), requestFor(0, 9, 0)), "1 shot 1");
    EXPECT_EQ(countLogged("returnState 1, id shot 1, munmapRet -1!", 3), 1U);
}

TEST_F(LivePhotoTest, CallsFromManyThreadsAtOnce_TearNoRecord) {
    // The frame's number stands in cslInfo (tag 1), and its low byte fills memoryAllocTimeoutInfo
    // (tag 38) at the far end. The fields written later depend on the store's place only, which
    // another frame may have by then.
    constexpr uint32_t kFrames = 600;
    host::stopLogCapture();
    openSession();
    std::atomic<bool> isOver{false};
    std::vector<std::thread> cameras;
    for (uint32_t camera = 0; camera < 3; ++camera) {
        cameras.emplace_back([this, camera] {
            for (uint32_t number = camera; number < kFrames; number += 3) {
                const std::array<uint32_t, 3> head = {number, number, number};
                const std::string tail(47, static_cast<char>(number));
                const std::string place(54, static_cast<char>(number % 180));
                frame(number).write(1, head);
                recorder().writeMaintain(number, 38, tail.data());
                recorder().CacheDataForLivePhoto(number);
                recorder().WriteMaintainForLivePhoto(number, 6, place.data());
                recorder().DoneDataForLivePhoto(number);
                recorder().VDRDone(number);
                recorder().WriteMaintainForLivePhoto(number, 6, place.data());
                recorder().DoneDataForLivePhoto(number);
                recorder().VDRReport(number);
            }
        });
    }
    int checked = 0;
    std::thread poster([&] {
        const Memory memory(180 * kPage);
        do {
            recorder().PostDataForLivePhoto(memory.fd(), requestFor(0, 9999, 180 * kPage));
            const std::string all = memory.content();
            for (size_t at = 0; at < all.size() && all[at + kPage - 1] == 0; at += kPage) {
                const uint32_t number = frameNumberOf(&all[at]);
                const std::array<uint32_t, 3> head = {number, number, number};
                EXPECT_EQ(std::memcmp(&all[at + 4], head.data(), 12), 0);
                EXPECT_EQ(all.substr(at + 3945, 47), std::string(47, static_cast<char>(number)));
                const std::string place = all.substr(at + 23, 54);
                EXPECT_TRUE(place == std::string(54, static_cast<char>(number % 180)) ||
                            place == std::string(54, '\0'));
                ++checked;
            }
        } while (!isOver);
    });
    for (std::thread& camera : cameras) {
        camera.join();
    }
    isOver = true;
    poster.join();
    EXPECT_GT(checked, 0);
}

}  // namespace
}  // namespace zk::test
