#include "tools/read/FileSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace vdrdump {

FileSource::FileSource(const std::string& path, OnBytes onBytes) : mOnBytes(std::move(onBytes)) {
    mFile = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (mFile < 0 || fstat(mFile, &status) != 0) {
        mOpenError = errno;
    } else if (S_ISDIR(status.st_mode)) {
        mOpenError = EISDIR;
    } else {
        posix_fadvise(mFile, 0, 0, POSIX_FADV_SEQUENTIAL);  // only advice: pipes refuse it
    }
}

FileSource::~FileSource() {
    if (mFile > STDIN_FILENO) {
        close(mFile);
    }
}

int64_t FileSource::read(uint8_t* to, size_t size) {
    if (mOpenError != 0) {
        return -mOpenError;
    }
    ssize_t length = 0;
    do {
        length = ::read(mFile, to, size);
    } while (length < 0 && errno == EINTR);
    if (length < 0) {
        return -errno;
    }
    mOnBytes(static_cast<uint64_t>(length));
    return length;
}

}  // namespace vdrdump
