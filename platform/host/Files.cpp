#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>

#include "platform/host/FileControl.h"

namespace {

struct FileState {
    FileState() {
        const char* root = std::getenv("VDR_ROOT");
        folder = root != nullptr ? root : "";
    }

    std::mutex mutex;
    std::string folder;
    std::array<std::atomic<int>, 4> callsUntilFailure{};
    std::atomic<bool> opensFail{false};
};

// Never destroyed: writers on the worker pool outlive the exit handlers.
FileState& state() {
    static auto* instance = new FileState;
    return *instance;
}

bool failsNow(zk::host::FileCall call) {
    std::atomic<int>& remaining = state().callsUntilFailure[static_cast<size_t>(call)];
    return remaining > 0 && remaining.fetch_sub(1) == 1;
}

bool openIsRefused() {
    const bool isRefused = state().opensFail || failsNow(zk::host::FileCall::kOpen);
    if (isRefused) {
        errno = EACCES;
    }
    return isRefused;
}

}  // namespace

void zk::host::setRootFolder(const std::string& folder) {
    const std::lock_guard guard(state().mutex);
    state().folder = folder;
}

std::string zk::host::hostPath(const std::string& devicePath) {
    const std::lock_guard guard(state().mutex);
    return state().folder + devicePath;
}

void zk::host::failFileCall(FileCall call, int nth) {
    state().callsUntilFailure[static_cast<size_t>(call)] = nth;
}

void zk::host::failEveryOpen(bool fail) {
    state().opensFail = fail;
}

std::FILE* zk::platform::openFile(const char* path, const char* mode) {
    return openIsRefused() ? nullptr : std::fopen(host::hostPath(path).c_str(), mode);
}

std::FILE* zk::platform::openForReading(const char* path) {
    if (openIsRefused()) {
        return nullptr;
    }
    const int fd = ::open(host::hostPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    std::FILE* file = fd < 0 ? nullptr : fdopen(fd, "r");
    if (file == nullptr && fd >= 0) {
        ::close(fd);
    }
    return file;
}

size_t zk::platform::writeFile(const void* data, size_t size, std::FILE* file) {
    if (failsNow(host::FileCall::kWrite)) {
        errno = ENOSPC;
        return std::fwrite(data, 1, size / 2, file);
    }
    return std::fwrite(data, 1, size, file);
}

int zk::platform::closeFile(std::FILE* file) {
    const int result = std::fclose(file);
    return failsNow(host::FileCall::kClose) ? EOF : result;
}

int zk::platform::changeMode(const char* path, mode_t mode) {
    if (failsNow(host::FileCall::kChangeMode)) {
        errno = EPERM;
        return -1;
    }
    return ::chmod(host::hostPath(path).c_str(), mode);
}
