#include "platform/Files.h"

#include "platform/RegularFile.h"

namespace zk::platform {

std::FILE* openFile(const char* path) {
    return openWithoutWaiting(path);
}

std::FILE* openDumpFile(const char* path, const char* mode) {
    return openRegularFile(path, mode);
}

size_t writeFile(const void* data, size_t size, std::FILE* file) {
    return std::fwrite(data, 1, size, file);
}

int closeFile(std::FILE* file) {
    return std::fclose(file);
}

int duplicate(std::FILE* file) {
    return duplicateDescriptor(file);
}

int changeModeAndClose(int fd, mode_t mode) {
    return changeDescriptorMode(fd, mode);
}

}  // namespace zk::platform
