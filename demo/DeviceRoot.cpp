#include "demo/DeviceRoot.h"

#include <cerrno>
#include <cstdio>
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

void DeviceRoot::prepare() const {
    fs::create_directories(dumpFolder());
    fs::create_directories(lossFolder());
    showMachine("/proc");
    showMachine("/sys");
    openLog();
    zk::host::setRootFolder(mFolder);
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", mLevel);
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", "1");
}

// A tree that is there already is left alone: it may describe a device.
void DeviceRoot::showMachine(const std::string& treePath) const {
    const std::string link = mFolder + treePath;
    if (!fs::exists(fs::symlink_status(link))) {
        fs::create_directory_symlink(treePath, link);
    }
}

// Stays open to the end of the process: the recorder logs from its exit handler.
void DeviceRoot::openLog() const {
    std::FILE* log = std::fopen(logPath().c_str(), "w");
    if (log == nullptr) {
        throw std::system_error(errno, std::generic_category(), logPath());
    }
    std::setvbuf(log, nullptr, _IOLBF, BUFSIZ);
    zk::host::setLogOutput(log);
}

}  // namespace demo
