#include "demo/FrameWriter.h"

#include <iterator>

#include "records/FieldTags.h"

namespace demo {

namespace tag = zk::tag;

void FrameWriter::writeHead(const FrameFields& fields) const {
    // videoAction is not among them: the recorder writes it when a recording starts or ends.
    static constexpr uint32_t kTags[] = {
            tag::frameNumber,     tag::cslInfo,   tag::masterCameraId, tag::manualCaptureTag,
            tag::sensorModeIndex, tag::zoomRatio, tag::sysStatusInfo,  tag::captureType,
    };
    const void* const datas[] = {
            &fields.number,     &fields.csl,  &fields.masterCamera, &fields.manualCapture,
            &fields.sensorMode, &fields.zoom, &fields.status,       &fields.captureType,
    };
    static_assert(std::size(kTags) == std::size(datas), "a value for every tag");
    mRecorder.writeMaintains(fields.number, kTags, datas, std::size(kTags));
}

void FrameWriter::writeResults(const FrameFields& fields) const {
    const uint32_t frame = fields.number;
    append(frame, tag::featureRequestStateInfo, fields.requests);
    append(frame, tag::featureMessageTypeInfo, fields.messages);
    append(frame, tag::pluginAlgoCostTime, fields.plugins);
    append(frame, tag::semantAlgoCostTime, fields.semantics);
    append(frame, tag::nodeInfo, fields.nodes);
    append(frame, tag::awbInfo_qawb_cap_sa, fields.scenes);
    for (uint32_t i = 0; i < fields.motionStamps.size(); ++i) {
        mRecorder.writeMaintain(frame, tag::setGmeNcsDep + i, &fields.motionStamps[i]);
    }
    mRecorder.writeMaintain(frame, tag::ae_af_awb_info, &fields.exposure);
    mRecorder.writeMaintain(frame, tag::awbInfo_qawb_cap, &fields.whiteBalance);
}

void FrameWriter::writeToLivePhoto(const FrameFields& fields) const {
    const uint32_t frame = fields.number;
    mRecorder.WriteMaintainForLivePhoto(frame, tag::ae_af_awb_info, &fields.exposure);
    mRecorder.WriteMaintainForLivePhoto(frame, tag::awbInfo_qawb_cap, &fields.whiteBalance);
    for (const vdr1::AwbCapSaInfo& scene : fields.scenes) {
        mRecorder.WriteMaintainForLivePhoto(frame, tag::awbInfo_qawb_cap_sa, &scene);
    }
}

// The recorder counts the elements of a list as they come.
template <typename List>
void FrameWriter::append(uint32_t frame, uint32_t tag, const List& elements) const {
    for (const auto& element : elements) {
        mRecorder.writeMaintain(frame, tag, &element);
    }
}

}  // namespace demo
