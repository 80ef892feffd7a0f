#include "integrations/gstreamer/RecorderLibrary.h"

#include <dlfcn.h>
#include <gst/gst.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "integrations/gstreamer/debugCategory.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/PropertyControl.h"

namespace vdrgst {
namespace {

constexpr char kLibrary[] = "libvideodatarecorder.so";  // found as this plug-in's own libraries are
constexpr char kSymbol[] = "_ZN2zk27getVideoDataRecoderInstanceEv";

constexpr char kSwitches[] = "vendor.camera.debug.VideoDataRecorder";
constexpr char kDumpFolder[] = "/data/vendor/camera";
constexpr char kLossFolder[] = "/data/vendor/camera_frame_lost";
constexpr char kLog[] = "/logcat.txt";

bool makeFolder(const std::string& path) {
    if (g_mkdir_with_parents(path.c_str(), 0777) == 0) {
        return true;
    }
    GST_ERROR("cannot make the folder %s: %s", path.c_str(), std::strerror(errno));
    return false;
}

// The sampler reads the machine through the root. What is there already may describe a device.
void showMachine(const std::string& root, const char* tree) {
    const std::string link = root + tree;
    if (symlink(tree, link.c_str()) != 0 && errno != EEXIST) {
        GST_WARNING("cannot link %s: %s", link.c_str(), std::strerror(errno));
    }
}

// Stays open to the end of the process: the recorder logs from its exit handler.
void openLog(const std::string& root) {
    std::FILE* const log = std::fopen((root + kLog).c_str(), "w");
    if (log == nullptr) {
        GST_WARNING("cannot write the log below %s: %s", root.c_str(), std::strerror(errno));
        return;
    }
    std::setvbuf(log, nullptr, _IOLBF, BUFSIZ);
    zk::host::setLogOutput(log);
}

void setSwitches(const TracerOptions& options) {
    const std::string name = kSwitches;
    zk::host::setProperty(name + "Status", "1");
    if (options.binary.has_value()) {
        zk::host::setProperty(name + "PreviewStatus", *options.binary ? "1" : "0");
    }
    if (options.level.has_value()) {
        zk::host::setProperty(name + "Level", std::to_string(*options.level));
    }
}

}  // namespace

zk::IVideoDataRecoder* RecorderLibrary::load(const TracerOptions& options) {
    if (!makeFolder(options.root + kDumpFolder) || !makeFolder(options.root + kLossFolder)) {
        return nullptr;
    }
    showMachine(options.root, "/proc");
    showMachine(options.root, "/sys");
    openLog(options.root);
    zk::host::setRootFolder(options.root);
    setSwitches(options);
    void* const library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library != nullptr ? dlsym(library, kSymbol) : nullptr;
    if (symbol == nullptr) {
        GST_ERROR("cannot load the recorder: %s", dlerror());
        return nullptr;
    }
    const auto getInstance = reinterpret_cast<zk::IVideoDataRecoder* (*)()>(symbol);
    return getInstance();
}

}  // namespace vdrgst
