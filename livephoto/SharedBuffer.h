#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>

namespace zk {

// The application's shared buffer: a mapping through a duplicate of its descriptor, and the way for
// records into it. The descriptor may be anything, and whoever else has it may do anything to it
// meanwhile. On one thread, from construction to destruction.
//
// Into files, memory files included, records go by pwrite: where a store through the mapping would
// end the process (an end that was moved, a hole on a full disk, an error of the disk), that is an
// error. A file's end is looked at before every record and not moved; only a file that is
// shortened between that look and the write may get its old length back. A descriptor that is
// switched to append mode in between gets the record at its end. Memory files of huge pages know
// no write: nothing can be put there.
//
// Everything else is a device's buffer, which knows no write either, has its memory and keeps its
// size: records are stored through the mapping. A driver that takes the memory back is not guarded
// against.
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
    // Whether `bytes` are mapped and behind the descriptor, up to the end of its last page.
    bool holds(size_t bytes) const;
    // Puts `size` bytes `offset` bytes into the buffer, which has been found to hold them; what
    // falls behind the end of a file that ends inside a page is dropped. False where not all of
    // the rest could be written.
    bool write(size_t offset, const void* data, size_t size);
    // munmap's result. To be called once.
    int unmap();

private:
    // While it lives, a write behind the process's limit on file sizes is an error only: the signal
    // that comes with it, which ends a process, is held back from this thread and dropped.
    class FileSizeSignal {
    public:
        FileSizeSignal();
        ~FileSizeSignal();
        FileSizeSignal(const FileSizeSignal&) = delete;
        FileSizeSignal& operator=(const FileSizeSignal&) = delete;

    private:
        sigset_t mSignal;
        sigset_t mUsual;
        bool mWasPending;  // then it is somebody else's
    };

    size_t objectSize() const;

    const FileSizeSignal mFileSizeSignal;
    const int mFd;
    const uint32_t mSize;
    void* const mAddress;
    const bool mIsFile;
    const int mWriteFd;  // of a file: mFd, or one that takes any bytes at any place
};

}  // namespace zk
