#include "platform/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zk::platform {
namespace {

constexpr mode_t kByUmask = 0666;

// Never waits: neither for the other end of a pipe nor for the holder of a lease.
constexpr int kCarefully = O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

bool isRegular(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

// Null, and `fd` closed, where that fails or is not wanted.
std::FILE* streamOf(int fd, const char* mode, bool isWanted) {
    std::FILE* file = isWanted ? ::fdopen(fd, mode) : nullptr;
    if (file == nullptr && fd >= 0) {
        ::close(fd);
    }
    return file;
}

}  // namespace

std::FILE* openWithoutWaiting(const char* path) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    return streamOf(fd, "r", fd >= 0);
}

std::FILE* openRegularFile(const char* path, const char* mode) {
    const int access = mode[0] == 'a' ? O_RDWR | O_APPEND : O_WRONLY | O_TRUNC;
    const int fd = ::open(path, access | kCarefully, kByUmask);
    return streamOf(fd, mode, isRegular(fd));
}

int duplicateDescriptor(std::FILE* file) {
    return ::fcntl(::fileno(file), F_DUPFD_CLOEXEC, 0);
}

int changeDescriptorMode(int fd, mode_t mode) {
    if (fd < 0) {
        return -1;
    }
    const int result = ::fchmod(fd, mode);
    ::close(fd);
    return result;
}

}  // namespace zk::platform
