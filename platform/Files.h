#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>

// The device's file tree. Paths are the device's absolute ones. Results and errors are those of
// fopen, fwrite, fclose and chmod. Any thread, one handle on one thread at a time.

namespace zk::platform {

std::FILE* openFile(const char* path, const char* mode);
// Waits for nobody: a pipe without writers reads as empty.
std::FILE* openForReading(const char* path);
// Bytes written; fewer than `size` on an error.
size_t writeFile(const void* data, size_t size, std::FILE* file);
int closeFile(std::FILE* file);
int changeMode(const char* path, mode_t mode);

}  // namespace zk::platform
