#pragma once

#include <functional>
#include <string>

// The device's file tree on Linux, and its faults. Any thread.
namespace zk::host {

// Paths are taken below `folder`; empty: as they stand. Until called, the environment variable
// VDR_ROOT at the first use decides.
void setRootFolder(const std::string& folder);
// Where a path of the device lies on this machine.
std::string hostPath(const std::string& devicePath);

enum class FileCall { kOpen, kWrite, kClose, kChangeMode };

// The `nth` call from now on (1: the next one) fails, that one only; 0 takes it back. A failing
// write leaves the first half of its bytes in the file.
void failFileCall(FileCall call, int nth);
// While set, every open fails.
void failEveryOpen(bool fail);
// Called before each of these calls, on the thread that makes it, and may take its time: a slow
// disk; empty: none.
void setFileCallHandler(std::function<void(FileCall)> handler);

}  // namespace zk::host
