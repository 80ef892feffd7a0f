#include "platform/Files.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/RegularFile.h"
#include "platform/host/FileControl.h"

namespace {

struct FileState {
    FileState() {
        const char* root = std::getenv("VDR_ROOT");
        folder = root != nullptr ? root : "";
    }

    std::mutex mutex;
    std::string folder;
    std::shared_ptr<const std::function<void(zk::host::FileCall)>> handler;
    std::array<std::atomic<int>, 4> callsUntilFailure{};
    std::atomic<bool> opensFail{false};
};

// Never destroyed: writers on the worker pool outlive the exit handlers.
FileState& state() {
    static auto* instance = new FileState;
    return *instance;
}

// Lets the handler have its time, and tells whether the call is to fail.
bool failsNow(zk::host::FileCall call) {
    std::shared_ptr<const std::function<void(zk::host::FileCall)>> handler;
    {
        const std::lock_guard guard(state().mutex);
        handler = state().handler;
    }
    if (handler != nullptr) {
        (*handler)(call);
    }
    std::atomic<int>& remaining = state().callsUntilFailure[static_cast<size_t>(call)];
    return remaining > 0 && remaining.fetch_sub(1) == 1;
}

bool mayOpen() {
    if (state().opensFail || failsNow(zk::host::FileCall::kOpen)) {
        errno = EACCES;
        return false;
    }
    return true;
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

void zk::host::setFileCallHandler(std::function<void(FileCall)> handler) {
    auto shared =
            handler ? std::make_shared<const std::function<void(FileCall)>>(std::move(handler))
                    : nullptr;
    const std::lock_guard guard(state().mutex);
    state().handler.swap(shared);
}

std::FILE* zk::platform::openFile(const char* path) {
    return mayOpen() ? openWithoutWaiting(host::hostPath(path).c_str()) : nullptr;
}

std::FILE* zk::platform::openDumpFile(const char* path, const char* mode) {
    return mayOpen() ? openRegularFile(host::hostPath(path).c_str(), mode) : nullptr;
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

int zk::platform::duplicate(std::FILE* file) {
    return duplicateDescriptor(file);
}

int zk::platform::changeModeAndClose(int fd, mode_t mode) {
    if (failsNow(host::FileCall::kChangeMode)) {
        ::close(fd);
        errno = EPERM;
        return -1;
    }
    return changeDescriptorMode(fd, mode);
}
