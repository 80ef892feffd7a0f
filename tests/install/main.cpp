#include <recorder/IVideoDataRecoder.h>
#include <records/FieldTags.h>
#include <records/VDRData1Layout.h>

#include <cstdio>
#include <cstring>

// Records a frame and reads it again.
int main() {
    zk::IVideoDataRecoder& recorder = *zk::getVideoDataRecoderInstance();
    recorder.initialize(1, -1);
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
    recorder.unInitialize();
    const bool isRecorded = record.zoomRatio == zoomRatio && record.nodeInfoCount == 1 &&
                            std::memcmp(&record.nodeInfo[0], &node, sizeof(node)) == 0;
    std::puts(isRecorded ? "the frame is recorded" : "the frame is not recorded");
    return isRecorded ? 0 : 1;
}
