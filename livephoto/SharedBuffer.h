#pragma once

#include <cstddef>
#include <cstdint>

namespace zk {

// A mapping of the application's shared buffer through a duplicate of its descriptor. The
// descriptor may be anything. One thread at a time.
class SharedBuffer {
public:
    // Duplicates `fd` and maps the first `size` bytes behind it.
    SharedBuffer(int fd, uint32_t size);
    // Closes the duplicate.
    ~SharedBuffer();
    SharedBuffer(const SharedBuffer&) = delete;
    SharedBuffer& operator=(const SharedBuffer&) = delete;

    bool isDuplicated() const { return mFd >= 0; }
    // As mmap returned it, for the log.
    void* address() const { return mAddress; }
    // Whether `bytes` can be written without a fault: mapped, and really behind the descriptor.
    bool holds(size_t bytes) const;
    // munmap's result. To be called once.
    int unmap();

private:
    size_t objectSize() const;
    bool isBacked(size_t bytes) const;

    const int mFd;
    const uint32_t mSize;
    void* const mAddress;
};

}  // namespace zk
