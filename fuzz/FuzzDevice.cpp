#include "fuzz/FuzzDevice.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "records/frameData.h"

namespace zk::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr char kVendorFolder[] = "/data/vendor";
constexpr char kBinFolder[] = "/data/vendor/camera";
constexpr char kTextFolder[] = "/data/vendor/camera_frame_lost";

// Makes the folder where it is missing, which takes longer than emptying it.
void emptyFolder(const fs::path& folder) {
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(folder, missing)) {
        fs::remove(entry.path());
    }
    if (missing) {
        fs::create_directories(folder);
    }
}

}  // namespace

void fail(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::abort();
}

FuzzDevice::FuzzDevice() {
    std::string root = (fs::temp_directory_path() / "vdr-fuzz-XXXXXX").string();
    mRoot = mkdtemp(root.data());
    setenv("TZ", "UTC", 1);
    tzset();
    host::setRootFolder(mRoot);
    host::setLogOutput(nullptr);
    reset();
}

FuzzDevice::~FuzzDevice() {
    fs::remove_all(mRoot);
}

void FuzzDevice::reset() {
    emptyFolder(mRoot.string() + kBinFolder);
    emptyFolder(mRoot.string() + kTextFolder);
    host::clearProperties();
    host::setWallClock(kNow);
    host::failClock(false);
    host::failEveryOpen(false);
    for (const host::FileCall call : {host::FileCall::kOpen, host::FileCall::kWrite,
                                      host::FileCall::kClose, host::FileCall::kChangeMode}) {
        host::failFileCall(call, 0);
    }
    host::withholdThermalObserver(false);
    host::setFirstAppFrameNumber(0);
    host::MonitoringService::instance().reset();
    host::forgetPromises();
    host::startLogCapture();
}

void FuzzDevice::makeFolders() const {
    fs::create_directories(mRoot.string() + kBinFolder);
    fs::create_directories(mRoot.string() + kTextFolder);
}

void FuzzDevice::removeFolders() const {
    fs::remove_all(mRoot.string() + kVendorFolder);
}

std::map<std::string, uint64_t> FuzzDevice::binFiles() const {
    std::map<std::string, uint64_t> sizes;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(mRoot.string() + kBinFolder, missing)) {
        sizes[entry.path().filename()] = entry.file_size();
    }
    return sizes;
}

std::map<std::string, std::string> FuzzDevice::textFiles() const {
    std::map<std::string, std::string> contents;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(mRoot.string() + kTextFolder, missing)) {
        std::string& content = contents[entry.path().filename()];
        content.resize(entry.file_size());
        std::ifstream(entry.path(), std::ios::binary)
                .read(content.data(), static_cast<std::streamsize>(content.size()));
    }
    return contents;
}

std::string FuzzDevice::binDigest() const {
    std::string digest;
    for (const auto& [name, size] : binFiles()) {
        digest += name;
        std::ifstream file(mRoot.string() + kBinFolder + '/' + name, std::ios::binary);
        char record[kFrameRecordSize];
        while (file.read(record, sizeof(record)) || file.gcount() > 0) {
            const std::string_view bytes(record, static_cast<size_t>(file.gcount()));
            digest += ' ' + std::to_string(std::hash<std::string_view>()(bytes));
        }
        digest += '\n';
    }
    return digest;
}

}  // namespace zk::fuzz
