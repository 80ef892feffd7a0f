#include "livephoto/SharedBuffer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Ion.h"

namespace zk {

SharedBuffer::SharedBuffer(int fd, uint32_t size)
      : mFd(dup(fd)),
        mSize(size),
        mAddress(mFd < 0 ? nullptr
                         : mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, mFd, 0)) {}

SharedBuffer::~SharedBuffer() {
    if (mFd >= 0) {
        ion_close(mFd);
    }
}

bool SharedBuffer::holds(size_t bytes) const {
    if (bytes == 0) {
        return true;
    }
    return mAddress != nullptr && mAddress != MAP_FAILED && bytes <= mSize &&
           bytes <= objectSize() && isBacked(bytes);
}

// Bytes that can be touched: a shared buffer's size, up to the end of its last page. Some kinds
// of buffer tell their size by seeking only.
size_t SharedBuffer::objectSize() const {
    struct stat status {};
    off_t size = fstat(mFd, &status) == 0 ? status.st_size : 0;
    if (size == 0) {
        if (const off_t position = lseek(mFd, 0, SEEK_CUR); position >= 0) {
            const off_t end = lseek(mFd, 0, SEEK_END);
            size = end > 0 ? end : 0;
            lseek(mFd, position, SEEK_SET);
        }
    }
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return (static_cast<size_t>(size) + page - 1) / page * page;
}

// A file with holes on a full disk faults when a hole is written to; buffers that are no files
// cannot be asked and have their memory.
bool SharedBuffer::isBacked(size_t bytes) const {
    int result = 0;
    do {
        result = fallocate(mFd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(bytes));
    } while (result != 0 && errno == EINTR);
    return result == 0 || (errno != ENOSPC && errno != EDQUOT && errno != ENOMEM);
}

int SharedBuffer::unmap() {
    return munmap(mAddress, mSize);
}

}  // namespace zk
