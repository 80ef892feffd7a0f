#include "demo/DeviceRoot.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/PropertyControl.h"

namespace demo {
namespace fs = std::filesystem;

DeviceRoot::DeviceRoot(const Options& options)
      : mFolder(options.root), mLevel(std::to_string(options.level)) {
    while (!mFolder.empty() && mFolder.back() == '/') {
        mFolder.pop_back();
    }
}

bool DeviceRoot::prepare() {
    if (!makeFolder(dumpFolder()) || !makeFolder(lossFolder()) || !showMachine("/proc") ||
        !showMachine("/sys") || !openLog()) {
        return false;
    }
    zk::host::setRootFolder(mFolder);
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", mLevel);
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", "1");
    return true;
}

bool DeviceRoot::makeFolder(const std::string& path) const {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        std::fprintf(stderr, "vdr_demo: %s: %s\n", path.c_str(), error.message().c_str());
    }
    return !error;
}

// A tree that is there already is left alone: it may describe a device.
bool DeviceRoot::showMachine(const std::string& treePath) const {
    const std::string link = mFolder + treePath;
    std::error_code error;
    const fs::file_type type = fs::symlink_status(link, error).type();
    if (type != fs::file_type::not_found) {
        return true;
    }
    fs::create_directory_symlink(treePath, link, error);
    if (error) {
        std::fprintf(stderr, "vdr_demo: %s: %s\n", link.c_str(), error.message().c_str());
    }
    return !error;
}

// Stays open to the end of the process: the recorder logs from its exit handler.
bool DeviceRoot::openLog() const {
    std::FILE* log = std::fopen(logPath().c_str(), "w");
    if (log == nullptr) {
        std::fprintf(stderr, "vdr_demo: %s: %s\n", logPath().c_str(), std::strerror(errno));
        return false;
    }
    std::setvbuf(log, nullptr, _IOLBF, BUFSIZ);
    zk::host::setLogOutput(log);
    return true;
}

}  // namespace demo
