#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zk::platform {

std::FILE* openFile(const char* path, const char* mode) {
    return std::fopen(path, mode);
}

std::FILE* openForReading(const char* path) {
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::FILE* file = fd < 0 ? nullptr : fdopen(fd, "r");
    if (file == nullptr && fd >= 0) {
        ::close(fd);
    }
    return file;
}

size_t writeFile(const void* data, size_t size, std::FILE* file) {
    return std::fwrite(data, 1, size, file);
}

int closeFile(std::FILE* file) {
    return std::fclose(file);
}

int changeMode(const char* path, mode_t mode) {
    return ::chmod(path, mode);
}

}  // namespace zk::platform
