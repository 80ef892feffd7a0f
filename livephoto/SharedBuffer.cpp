#include "livephoto/SharedBuffer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

#include "platform/BoundedMemory.h"
#include "platform/Ion.h"

namespace zk {
namespace {

bool isRegular(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

// In append mode pwrite goes to the end whatever its offset, in direct mode it refuses records that
// do not lie on the disk's blocks; and the mode belongs to whoever else has the descriptor: the
// file is opened again. Negative where that is refused.
int openForWriting(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0 || (flags & (O_APPEND | O_DIRECT)) == 0) {
        return fd;
    }
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
}

size_t toEndOfPage(size_t size) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

}  // namespace

SharedBuffer::FileSizeSignal::FileSizeSignal() {
    sigset_t pending;
    sigpending(&pending);
    mWasPending = sigismember(&pending, SIGXFSZ) == 1;
    sigemptyset(&mSignal);
    sigaddset(&mSignal, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &mSignal, &mUsual);
}

SharedBuffer::FileSizeSignal::~FileSizeSignal() {
    if (!mWasPending) {
        const timespec now{};
        sigtimedwait(&mSignal, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &mUsual, nullptr);
}

SharedBuffer::SharedBuffer(int fd, uint32_t size)
      : mFd(fcntl(fd, F_DUPFD_CLOEXEC, 0)),
        mSize(size),
        mAddress(mFd < 0 ? nullptr
                         : mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, mFd, 0)),
        mIsFile(isRegular(mFd)),
        mWriteFd(mIsFile ? openForWriting(mFd) : -1) {}

SharedBuffer::~SharedBuffer() {
    if (mWriteFd >= 0 && mWriteFd != mFd) {
        close(mWriteFd);
    }
    if (mFd >= 0) {
        ion_close(mFd);
    }
}

bool SharedBuffer::holds(size_t bytes) const {
    return bytes == 0 || (mAddress != nullptr && mAddress != MAP_FAILED && bytes <= mSize &&
                          bytes <= toEndOfPage(objectSize()));
}

// Some kinds of device buffer tell their size by seeking only, and some of those not where they
// are: they have no position but their beginning.
size_t SharedBuffer::objectSize() const {
    struct stat status {};
    off_t size = fstat(mFd, &status) == 0 ? status.st_size : 0;
    if (size == 0 && !mIsFile) {
        const off_t position = lseek(mFd, 0, SEEK_CUR);
        size = lseek(mFd, 0, SEEK_END);
        lseek(mFd, std::max<off_t>(position, 0), SEEK_SET);
    }
    return size > 0 ? static_cast<size_t>(size) : 0;
}

bool SharedBuffer::write(size_t offset, const void* data, size_t size) {
    const auto* from = static_cast<const uint8_t*>(data);
    if (!mIsFile) {
        return memcpy_s(static_cast<uint8_t*>(mAddress) + offset, size, from, size) == 0;
    }
    const size_t fileSize = objectSize();
    if (offset + size > toEndOfPage(fileSize)) {
        return false;
    }
    const size_t end = std::min(offset + size, fileSize);
    while (offset < end) {
        const ssize_t written = pwrite(mWriteFd, from, end - offset, static_cast<off_t>(offset));
        if (written > 0) {
            offset += static_cast<size_t>(written);
            from += written;
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

int SharedBuffer::unmap() {
    return munmap(mAddress, mSize);
}

}  // namespace zk
