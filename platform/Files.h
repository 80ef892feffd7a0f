#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>

// The device's file tree. Paths are the device's absolute ones. Results and errors are those of
// fopen, fwrite, fclose and fchmod. Any thread, one handle on one thread at a time.

namespace zk::platform {

// For reading. Waits for nobody: a pipe without writers reads as empty.
std::FILE* openFile(const char* path);
// For writing, made if missing: "ab+" appends, "w" starts anew. Null for whatever is no regular
// file, and for a symbolic link: the folders of the dumps belong to nobody alone, and neither what
// a name leads to nor who reads a pipe is ours to trust. Closed in a process that is started.
std::FILE* openDumpFile(const char* path, const char* mode);
// Bytes written; fewer than `size` on an error.
size_t writeFile(const void* data, size_t size, std::FILE* file);
int closeFile(std::FILE* file);
// A descriptor of the same open file, which outlives `file`; -1 on an error.
int duplicate(std::FILE* file);
// Sets the mode of the open file and closes `fd`, which may be -1. 0, or -1 where the mode stays.
int changeModeAndClose(int fd, mode_t mode);

}  // namespace zk::platform
