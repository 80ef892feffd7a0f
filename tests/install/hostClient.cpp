#include <platform/SyncManager.h>
#include <platform/host/FileControl.h>
#include <platform/host/LogControl.h>
#include <platform/host/MonitoringService.h>
#include <recorder/IVideoDataRecoder.h>
#include <records/FieldTags.h>
#include <records/VDRData1Layout.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

// A frame with a node, as it is read again from the record.
bool recordsAFrame(zk::IVideoDataRecoder& recorder) {
    const uint32_t number = 7;
    recorder.VDRProcessing(number);
    recorder.writeMaintain(number, zk::tag::frameNumber, &number);
    const float zoomRatio = 1.5F;
    recorder.writeMaintain(number, zk::tag::zoomRatio, &zoomRatio);
    const vdr1::NodeInfo node = {{20, 1, 0}, {1000, 1010, 1020, 1030}};
    recorder.writeMaintain(number, zk::tag::nodeInfo, &node);
    recorder.VDRDone(number);

    void* block = nullptr;
    recorder.getVDRInfo(number, &block);
    vdr1::VDRData1Layout record = {};
    if (block != nullptr) {
        std::memcpy(&record, block, sizeof(record));
    }
    recorder.VDRReport(number);
    return record.zoomRatio == zoomRatio && record.nodeInfoCount == 1 &&
           std::memcmp(&record.nodeInfo[0], &node, sizeof(node)) == 0;
}

bool isAnswered(uint64_t lossTimeStamp) {
    auto* promises = zk::SyncManager::getInstance();
    const auto future = promises->getFuture(lossTimeStamp);
    auto& service = zk::host::MonitoringService::instance();
    service.announceFrameDrop(lossTimeStamp, 100);
    service.waitUntilDelivered();
    return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

}  // namespace

// A client that knows the installed library and the means to steer the device's stand-ins. Whether
// every record goes into a binary file is decided by its environment.
int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: hostClient FOLDER\n", stderr);
        return 2;
    }
    namespace fs = std::filesystem;
    const std::string root = argv[1];
    fs::create_directories(root + "/data/vendor/camera");
    fs::create_directories(root + "/data/vendor/camera_frame_lost");
    zk::host::setRootFolder(root);
    zk::host::setLogOutput(nullptr);
    zk::host::startLogCapture();

    zk::IVideoDataRecoder& recorder = *zk::getVideoDataRecoderInstance();
    recorder.initialize(1, -1);
    const bool isRecorded = recordsAFrame(recorder);
    const bool isAnsweredAtOnce = isAnswered(1'000'000);
    recorder.unInitialize();
    const bool isKept = zk::SyncManager::getInstance()->getFuture(1'000'000).wait_for(
                                std::chrono::seconds(0)) == std::future_status::ready;
    const bool hasFile = !fs::is_empty(root + "/data/vendor/camera");
    const bool isLogged = !zk::host::capturedLog().empty();

    std::printf("recorded: %d, binary file: %d, loss taken: %d, promise kept: %d, logged: %d\n",
                isRecorded, hasFile, !isAnsweredAtOnce, isKept, isLogged);
    return isRecorded && hasFile && !isAnsweredAtOnce && isKept && isLogged ? 0 : 1;
}
