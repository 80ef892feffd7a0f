#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "livephoto/SharedBuffer.h"
#include "testing/RecorderTest.h"

// Every write of a record into a shared file comes by here and can be answered otherwise, and every
// question about a file and its position.

namespace {

using Write = std::function<ssize_t(int fd, const void* data, size_t size, off_t offset)>;
Write writeOtherwise;
bool isPositionless = false;                // as some drivers' buffers
constexpr off_t kPositionless = 64 * 1024;  // their size, in bytes
enum class Stat { kUsual, kDevice, kFails } statOtherwise = Stat::kUsual;

}  // namespace

extern "C" {
ssize_t __real_pwrite(int fd, const void* data, size_t size, off_t offset);
ssize_t __wrap_pwrite(int fd, const void* data, size_t size, off_t offset) {
    return (writeOtherwise ? writeOtherwise : __real_pwrite)(fd, data, size, offset);
}
off_t __real_lseek(int fd, off_t offset, int whence);
off_t __wrap_lseek(int fd, off_t offset, int whence) {
    if (!isPositionless) {
        return __real_lseek(fd, offset, whence);
    }
    errno = EINVAL;
    return whence == SEEK_END ? kPositionless : whence == SEEK_SET && offset == 0 ? 0 : -1;
}
int __real_fstat(int fd, struct stat* status);
int __wrap_fstat(int fd, struct stat* status) {
    const int result = __real_fstat(fd, status);
    if (statOtherwise == Stat::kDevice) {
        status->st_mode = S_IFCHR;
        status->st_size = 0;
    }
    return statOtherwise == Stat::kFails ? -1 : result;
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
        Stat stat = Stat::kUsual;
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
            {"device that tells its size by seeking only", 1, nullptr, Stat::kDevice},
            {"nobody knows what it is", 1, nullptr, Stat::kFails},
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
        statOtherwise = row.stat;
        recorder().PostDataForLivePhoto(fd, R"({"endFrame":9,"bufferSize":8192})");
        writeOtherwise = nullptr;
        statOtherwise = Stat::kUsual;
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

// A driver's buffer that tells its size, but no position: stored through the mapping, of which
// /dev/zero gives one.
TEST_F(SharedBufferFaultsTest, BufferWithoutPosition_HoldsWhatItsEndTells) {
    const int fd = open("/dev/zero", O_RDWR | O_CLOEXEC);
    isPositionless = true;
    SharedBuffer buffer(fd, 2 * kPositionless);
    EXPECT_TRUE(buffer.holds(kPositionless));
    EXPECT_FALSE(buffer.holds(kPositionless + 1));
    isPositionless = false;
    frameData record{};
    record.bytes[7] = 7;
    EXPECT_TRUE(buffer.write(0, record.bytes, kFrameRecordSize));
    EXPECT_EQ(static_cast<const uint8_t*>(buffer.address())[7], 7);
    EXPECT_EQ(buffer.unmap(), 0);
    close(fd);
}

}  // namespace
}  // namespace zk::test
