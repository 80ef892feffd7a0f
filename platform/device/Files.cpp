#include "platform/Files.h"

#include <sys/stat.h>

namespace zk::platform {

std::FILE* openFile(const char* path, const char* mode) {
    return std::fopen(path, mode);
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
