#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "tests/RecorderTest.h"

// Every write of a record into a shared file comes by here and can be answered otherwise.

namespace {

using Write = std::function<ssize_t(int fd, const void* data, size_t size, off_t offset)>;
Write writeOtherwise;

}  // namespace

extern "C" {
ssize_t __real_pwrite(int fd, const void* data, size_t size, off_t offset);
ssize_t __wrap_pwrite(int fd, const void* data, size_t size, off_t offset) {
    return (writeOtherwise ? writeOtherwise : __real_pwrite)(fd, data, size, offset);
}
}

namespace zk::test {
namespace {

using SharedBufferFaultsTest = RecorderTest;

TEST_F(SharedBufferFaultsTest, WriteThatIsCutOrFails_IsContinuedOrAnswersStateZero) {
    int calls = 0;
    struct Row {
        const char* name;
        int state;
        Write write;
    };
    const Row rows[] = {
            {"interrupted, then in pieces", 1,
             [&](int fd, const void* data, size_t size, off_t offset) {
                 errno = EINTR;
                 return ++calls % 2 == 1 ? -1 : __real_pwrite(fd, data, size / 2 + 1, offset);
             }},
            {"disk full at the second record", 0,
             [&](int fd, const void* data, size_t size, off_t offset) {
                 errno = ENOSPC;
                 return offset > 0 ? -1 : __real_pwrite(fd, data, size, offset);
             }},
            {"nothing is taken", 0, [](int, const void*, size_t, off_t) { return ssize_t{0}; }},
            {"cut behind the first record", 0,
             [](int fd, const void* data, size_t size, off_t offset) {
                 const ssize_t written = __real_pwrite(fd, data, size, offset);
                 return ftruncate(fd, kFrameRecordSize) == 0 ? written : -1;
             }},
    };
    openSession();
    std::string reply;
    recorder().RegisterCamDataCb([&](uint32_t, const std::string& text) { reply = text; });
    for (const uint32_t number : {1U, 2U}) {
        frame(number).stamp().done();
        recorder().DoneDataForLivePhoto(number);
    }
    for (const Row& row : rows) {
        const int fd = memfd_create("buffer", MFD_CLOEXEC);
        ASSERT_EQ(ftruncate(fd, 2 * kFrameRecordSize), 0);
        writeOtherwise = row.write;
        recorder().PostDataForLivePhoto(fd, R"({"endFrame":9,"bufferSize":8192})");
        writeOtherwise = nullptr;
        EXPECT_NE(reply.find("\"state\" : " + std::to_string(row.state)), std::string::npos)
                << row.name << reply;
        frameData second{};
        EXPECT_GE(pread(fd, second.bytes, kFrameRecordSize, kFrameRecordSize), 0);
        EXPECT_EQ(row.state == 1 ? checkStamps(second.bytes) : second.frameNumber(),
                  row.state == 1 ? 2U : 0U)
                << row.name;
        close(fd);
    }
}

}  // namespace
}  // namespace zk::test
