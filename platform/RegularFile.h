#pragma once

#include <sys/types.h>

#include <cstdio>

// What both platforms make of files.
namespace zk::platform {

// As openFile() of Files.h, with a path of the machine.
std::FILE* openWithoutWaiting(const char* path);
// As openDumpFile() there, likewise.
std::FILE* openRegularFile(const char* path, const char* mode);
// As duplicate() and changeModeAndClose() there.
int duplicateDescriptor(std::FILE* file);
int changeDescriptorMode(int fd, mode_t mode);

}  // namespace zk::platform
