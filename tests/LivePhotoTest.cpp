#include <fcntl.h>
#include <json/reader.h>
#include <json/value.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "livephoto/LivePhotoRequest.h"
#include "platform/host/DeviceControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

using Frames = std::vector<uint32_t>;

constexpr size_t kPage = 4096;
constexpr char kBuffer[] = "/buffer";

std::string requestFor(uint32_t start, uint32_t end, size_t bufferSize) {
    return R"({"id":"shot 1","startFrame":)" + std::to_string(start) + R"(,"endFrame":)" +
           std::to_string(end) + R"(,"bufferSize":)" + std::to_string(bufferSize) + "}";
}

class LivePhotoTest : public RecorderTest {
protected:
    // Opens a session whose replies are kept.
    void openListening() {
        openSession();
        recorder().RegisterCamDataCb([this](uint32_t code, std::string reply) {
            EXPECT_EQ(code, 80U);
            mReplies.push_back(std::move(reply));
        });
    }
    // Stores the frame as it is before it is done, with its number's low byte in a field.
    void queueFrames(uint32_t first, uint32_t last) {
        for (uint32_t number = first; number <= last; ++number) {
            frame(number).write(tag::masterCameraId, static_cast<uint8_t>(number));
            recorder().CacheDataForLivePhoto(number);
            recorder().DoneDataForLivePhoto(number);
            recorder().VDRDone(number);
            recorder().VDRReport(0);
        }
    }
    // A new file full of 0xEE.
    int openBuffer(size_t size, int mode = O_RDWR) const {
        std::filesystem::remove(onHost(kBuffer));
        layFile(kBuffer, std::string(size, '\xEE'));
        return open(onHost(kBuffer).c_str(), mode | O_CLOEXEC);
    }
    // "1 id" as the last reply has them; "none" where there is no new reply. Closes `fd`.
    std::string post(int fd, const std::string& request) {
        mReplies.clear();
        recorder().PostDataForLivePhoto(fd, request);
        close(fd);
        Json::Value reply;
        if (mReplies.size() != 1 || !Json::Reader().parse(mReplies[0], reply)) {
            return mReplies.empty() ? "none" : "no single reply";
        }
        return std::to_string(reply["state"].asInt()) + " " + reply["id"].asString();
    }
    // The frames that a request gets into a large buffer.
    Frames framesFor(uint32_t start, uint32_t end) {
        const std::string content = takeLivePhoto(start, end, 181 * kPage);
        Frames frames;
        for (size_t at = 0; frameNumberOf(&content[at]) != 0; at += kPage) {
            frames.push_back(frameNumberOf(&content[at]));
        }
        return frames;
    }
    Frames allFrames() { return framesFor(0, UINT32_MAX - 1); }
    static off_t sizeOf(int fd) {
        struct stat status {};
        return fstat(fd, &status) == 0 ? status.st_size : -1;
    }

    Lines mReplies;
};

TEST_F(LivePhotoTest, RequestIsServedStepByStep) {
    openListening();
    host::setFirstAppFrameNumber(100);
    queueFrames(5, 9);
    std::string expected(3 * kPage, '\0');
    expected[0] = expected[16] = 7;
    expected[kPage] = expected[kPage + 16] = 8;
    expected.replace(2 * kPage, kPage, kPage, '\xEE');
    forgetLog();
    EXPECT_EQ(post(openBuffer(3 * kPage), requestFor(107, 108, 3 * kPage)), "1 shot 1");
    EXPECT_EQ(readFile(kBuffer), expected);
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
            {"end beyond the queue", 0, 12, 99, {12, 13}, {12, 13}},
            {"end just before the start: none", 0, 11, 10, {}, {11, 12, 13}},
            {"end further before: all", 0, 11, 9, {11, 12, 13}, {11, 12, 13}},
            {"as many as there are numbers: none", 0, 0, 0xFFFFFFFF, {}, {10, 11, 12, 13}},
            {"start beyond the queue empties it", 0, 0x80000000, 0x80000005, {}, {}},
            {"application's end wraps", 0xFFFFFFF4, 0xFFFFFFFF, 0, {11, 12}, {11, 12, 13}},
            {"application's start wraps", 0xFFFFFFF4, 0, 0, {12}, {12, 13}},
    };
    openListening();
    for (const Row& row : rows) {
        queueFrames(10, 13);
        host::setFirstAppFrameNumber(row.firstApp);
        EXPECT_EQ(framesFor(row.start, row.end), row.posted) << row.name;
        host::setFirstAppFrameNumber(0);
        EXPECT_EQ(allFrames(), row.left) << row.name;
        closeSession();
    }
}

TEST_F(LivePhotoTest, QueueHoldsTheNewest180_UntilTheSessionEnds) {
    openListening();
    queueFrames(1, 181);
    EXPECT_EQ(transcript("larger than 180"),
              (Lines{"D DoneDataForLivePhoto<LINE>: VDR::DoneDataForLivePhoto, "
                     "mOfflineVDRDataOut size larger than 180!"}));
    Frames newest(180);
    std::iota(newest.begin(), newest.end(), 2);
    EXPECT_EQ(allFrames(), newest);
    EXPECT_EQ(framesFor(180, 999), (Frames{180, 181})) << "many are dropped at once";
    closeSession();
    recorder().DoneDataForLivePhoto(181);
    EXPECT_EQ(allFrames(), Frames{});
}

TEST_F(LivePhotoTest, StoreKeepsOneWritableRecordPerPlaceOf180) {
    openListening();
    const uint32_t renumbered = 41;
    recorder().CacheDataForLivePhoto(5);  // nothing is being filled
    recorder().WriteMaintainForLivePhoto(5, tag::frameNumber, &renumbered);
    recorder().DoneDataForLivePhoto(5);
    for (const uint32_t number : {5U, 185U}) {
        frame(number);
        recorder().CacheDataForLivePhoto(number);
    }
    recorder().DoneDataForLivePhoto(5);
    recorder().WriteMaintainForLivePhoto(5, tag::frameNumber, &renumbered);
    recorder().WriteMaintainForLivePhoto(7, tag::kCount, &renumbered);
    recorder().WriteMaintainForLivePhoto(7, tag::frameNumber, nullptr);
    recorder().DoneDataForLivePhoto(365);
    frame(5).done();  // the completed record takes the place
    recorder().DoneDataForLivePhoto(185);
    EXPECT_EQ(allFrames(), (Frames{185, 41, 5}));
    const std::string refused =
            "E WriteMaintainForLivePhoto<LINE>: VDR::WriteMaintainForLivePhoto, tagId is wrong or "
            "data is nullptr, tagId=";
    EXPECT_EQ(transcript("WriteMaintainForLivePhoto"),
              (Lines{refused + "39, frameNumber=7!", refused + "0, frameNumber=7!"}));
}

TEST_F(LivePhotoTest, CallbackStaysUntilReplaced_AlsoFromWithin) {
    openListening();
    recorder().RegisterCamDataCb(nullptr);
    EXPECT_EQ(transcript("func is nullptr"),
              Lines{"E RegisterCamDataCb<LINE>: VDR::RegisterCamDataCb, func is nullptr"});
    play("stop open");
    EXPECT_EQ(post(openBuffer(kPage), requestFor(0, 9, kPage)), "1 shot 1");
    recorder().RegisterCamDataCb([this](uint32_t, const std::string&) { openListening(); });
    EXPECT_EQ(post(openBuffer(kPage), requestFor(0, 9, kPage)), "none");
    EXPECT_EQ(post(openBuffer(kPage), requestFor(0, 9, kPage)), "1 shot 1");
    EXPECT_EQ(countLogged("VDR::RegisterCamDataCb success!"), 3U);
}

int memory(off_t size, int seals = 0) {
    const int fd = memfd_create("memory", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(ftruncate(fd, size), 0);
    EXPECT_EQ(fcntl(fd, F_ADD_SEALS, seals), 0);
    return fd;
}

int pipeEnd() {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    return ends[1];
}

// Every kind of descriptor, with two records (two pages) to post.
TEST_F(LivePhotoTest, NoDescriptorFaults_AndTheReplyTellsTheOutcome) {
    struct Row {
        const char* name;
        int fd;
        size_t bufferSize;
        const char* reply;
        int munmapRet;
    };
    const Row rows[] = {
            {"regular file", openBuffer(2 * kPage), 3 * kPage, "1 shot 1", 0},
            {"in append mode", openBuffer(2 * kPage, O_RDWR | O_APPEND), 3 * kPage, "1 shot 1", 0},
            {"memory as long", memory(8192), 2 * kPage, "1 shot 1", 0},
            {"memory shorter within the page", memory(4097), 3 * kPage, "1 shot 1", 0},
            {"memory shorter", memory(4096), 3 * kPage, "0 shot 1", 0},
            {"memory empty", memory(0), 3 * kPage, "0 shot 1", 0},
            {"sealed in size", memory(4100, F_SEAL_GROW | F_SEAL_SHRINK), 9999, "1 shot 1", 0},
            {"sealed in content", memory(8192, F_SEAL_WRITE), 2 * kPage, "0 shot 1", -1},
            {"sealed by now", memory(8192, F_SEAL_FUTURE_WRITE), 2 * kPage, "0 shot 1", -1},
            {"request too small", memory(99999), 2 * kPage - 1, "0 shot 1", 0},
            {"request of nothing", memory(99999), 0, "0 shot 1", -1},
            {"request of four gigabytes", memory(8192), UINT32_MAX, "1 shot 1", 0},
            {"read-only", openBuffer(2 * kPage, O_RDONLY), 3 * kPage, "0 shot 1", -1},
            {"zeros", open("/dev/zero", O_RDWR), 3 * kPage, "0 shot 1", 0},
            {"no file", eventfd(0, 0), 3 * kPage, "0 shot 1", -1},
            {"pipe", pipeEnd(), 3 * kPage, "0 shot 1", -1},
            {"socket", socket(AF_UNIX, SOCK_STREAM, 0), 3 * kPage, "0 shot 1", -1},
            {"closed", -1, 3 * kPage, "none", 0},
    };
    openListening();
    queueFrames(1, 2);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const int twin = dup(row.fd);  // shares position and mode
        const off_t position = lseek(twin, 3, SEEK_SET) == 3 ? 3 : lseek(twin, 0, SEEK_CUR);
        const int mode = fcntl(twin, F_GETFL);
        const off_t size = sizeOf(twin);
        forgetLog();
        EXPECT_EQ(post(row.fd, requestFor(0, 9, row.bufferSize)), row.reply);
        EXPECT_EQ(lseek(twin, 0, SEEK_CUR), position);
        EXPECT_EQ(fcntl(twin, F_GETFL), mode);
        EXPECT_EQ(sizeOf(twin), size);
        uint8_t first = 0;
        uint8_t second = 0;
        pread(twin, &first, 1, 0);
        pread(twin, &second, 1, kPage);
        close(twin);
        EXPECT_EQ(first == 1 && second == 2, row.reply[0] == '1');
        EXPECT_EQ(countLogged("apk apply size:" + std::to_string(row.bufferSize) +
                              ", postQueue need size:8192!"),
                  row.reply[0] == '0' ? 1U : 0U);
        EXPECT_EQ(countLogged("munmapRet " + std::to_string(row.munmapRet) + "!"),
                  row.reply[0] == 'n' ? 0U : 1U);
        EXPECT_EQ(allFrames(), (Frames{1, 2})) << "the records stay queued";
    }
}

// A file on a disk of its own, which nobody else sees and which is gone with the file. Negative
// where that is not allowed.
int openSmallDisk(const std::string& folder, size_t size) {
    int fd = -1;
    std::thread([&] {
        const std::string options = "size=" + std::to_string(size);
        std::filesystem::create_directory(folder);
        if (unshare(CLONE_NEWNS) == 0 &&
            mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            mount("vdr", folder.c_str(), "tmpfs", 0, options.c_str()) == 0) {
            fd = open((folder + "/buffer").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        }
    }).join();
    return fd;
}

// The application cuts its buffer and makes it long again, all the time.
TEST_F(LivePhotoTest, BufferThatShrinksMeanwhile_IsServedOrNot) {
    constexpr int kPosts = 3000;
    constexpr uint32_t kRecords = 16;
    openListening();
    queueFrames(1, kRecords);
    for (const int fd : {memory(kRecords * kPage), openBuffer(kRecords * kPage)}) {
        std::atomic<bool> isOver{false};
        std::thread application([&] {
            for (size_t size = 0; !isOver; size = (size + 5000) % (kRecords * kPage)) {
                EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
                EXPECT_EQ(ftruncate(fd, kRecords * kPage), 0);
            }
        });
        std::set<std::string> replies;
        for (int i = 0; i < kPosts; ++i) {
            replies.insert(post(dup(fd), requestFor(0, 99, kRecords * kPage)));
        }
        isOver = true;
        application.join();
        EXPECT_EQ(sizeOf(fd), kRecords * kPage);
        EXPECT_EQ(post(fd, requestFor(0, 99, kRecords * kPage)), "1 shot 1");
        replies.erase("1 shot 1");
        EXPECT_EQ(replies, std::set<std::string>{"0 shot 1"});
    }
}

// A file of holes, the disk of which has room for half of them.
TEST_F(LivePhotoTest, FullDisk_AnswersStateZero) {
    openListening();
    queueFrames(1, 8);
    const std::string disk = onHost("/disk");
    const int fd = openSmallDisk(disk, 4 * kPage);
    if (fd < 0) {
        GTEST_SKIP() << "only root may mount one";
    }
    EXPECT_EQ(ftruncate(fd, 8 * kPage), 0);
    EXPECT_EQ(post(fd, requestFor(0, 9, 8 * kPage)), "0 shot 1");
    EXPECT_EQ(countLogged("postQueue need size:32768!"), 1U);
    EXPECT_EQ(countLogged("munmapRet 0!"), 1U);
}

// The process's limit on file sizes, behind which a write also sends a signal that ends it.
TEST_F(LivePhotoTest, BufferBehindTheLimitOnFileSizes_AnswersStateZero) {
    openListening();
    queueFrames(1, 2);
    const int fd = openBuffer(2 * kPage);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit onePage{kPage, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &onePage);
    const std::string reply = post(fd, requestFor(0, 9, 2 * kPage));
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(reply, "0 shot 1");
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
}

struct Text {
    const char* name;
    std::string json;
    std::string expected;  // "id start end size"
};

std::string parsed(const std::string& json) {
    const LivePhotoRequest request = LivePhotoRequest::parse(json);
    return request.id + " " + std::to_string(request.startFrame) + " " +
           std::to_string(request.endFrame) + " " + std::to_string(request.bufferSize);
}

const std::string kRead = "a 0 0 0";
const std::string kEmpty = " 0 0 0";

// The parser ends the process at a value below its thousandth level.
TEST_F(LivePhotoTest, UntrustedText_ReadsAsFarAsItCan) {
    const std::string member = R"({"id":"a","x":)";
    const std::string brackets(998, '[');
    const std::string blanks(16384 - 10, ' ');
    const Text rows[] = {
            {"whole", R"({"id":"a","startFrame":1,"endFrame":4294967295,"bufferSize":4096})",
             "a 1 4294967295 4096"},
            {"no object", "7", kEmpty},
            {"id an array", R"({"id":["a"],"startFrame":1})", " 1 0 0"},
            {"out of range", R"({"startFrame":-1,"endFrame":4294967296,"bufferSize":1e30})",
             kEmpty},
            {"other types", R"({"startFrame":"1","endFrame":true,"bufferSize":[1]})", " 0 1 0"},
            {"half, with comments",
             "{\"id\":/*{*/12,\"startFrame\":7//[\n,\"endFrame\":", "12 7 0 0"},
            {"NUL in a string", std::string(R"({"id":"a)") + '\0' + R"(b"})",
             std::string("a\0b 0 0 0", 9)},
            {"999 levels", member + brackets + "1" + std::string(998, ']') + "}", kRead},
            {"1000 levels", member + "[" + brackets + "1" + std::string(999, ']') + "}", kEmpty},
            {"open ones", member + brackets, kRead},
            {"one more", member + brackets + "{", kEmpty},
            {"one more in a string", member + '"' + brackets + "[\"}", kEmpty},
            {"as long as may be", R"({"id":"a"})" + blanks, kRead},
            {"longer", R"({"id":"a"})" + blanks + " ", kEmpty},
    };
    for (const Text& row : rows) {
        EXPECT_EQ(parsed(row.json), row.expected) << row.name;
    }
}

}  // namespace
}  // namespace zk::test
