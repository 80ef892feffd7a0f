#include "platform/Log.h"
#include "records/RecordLine.h"
#include "records/VDRData2.h"

namespace vdr2 {

#define VDR_AT(field) offsetof(VDRData2, field)
#define VDR_ARRAY(field, count) VDR_AT(count), VDR_AT(field), sizeof(VDRData2::field[0])

// The columns follow the layout without a gap; docs/formats.md names them.
void VDRData2::makeFrameContent(const void* srcData, void* destData) {
    const auto feature = [](zk::RecordLine& element) { element.u32().u8().u64(); };
    const auto algoCost = [](zk::RecordLine& element) {
        element.text(sizeof(AlgoCostTime::name)).u8();
    };

    zk::RecordLine line(srcData, destData);
    line.u32().u32().u64().u8().u8().u8().f32();
    line.u32(3).u16().f32(3).u32(6).u16().u8(2);  // sysStatusInfo
    line.u8().u8();
    line.elements(VDR_ARRAY(featureRequestStateInfo, featureRequestStateInfoCount), feature);
    line.elements(VDR_ARRAY(featureMessageTypeInfo, featureMessageTypeInfoCount), feature);
    line.elements(VDR_ARRAY(pluginAlgoCostTime, pluginAlgoCostTimeCount), algoCost);
    line.elements(VDR_ARRAY(semantAlgoCostTime, semantAlgoCostTimeCount), algoCost);
    line.elements(VDR_ARRAY(nodeInfo, nodeInfoCount),
                  [](zk::RecordLine& element) { element.u32(3).u64(4); });
    line.at(VDR_AT(setGmeNcsDep)).u64(15);
    line.u32(2).f32(6).u32().i16().u32(5).i16();  // ae_af_awb_info
    line.f32(9).u32();                            // awbInfo_qawb_cap
    line.elements(VDR_ARRAY(awbInfo_qawb_cap_sa, awbInfo_qawb_cap_saCount),
                  [](zk::RecordLine& element) { element.text(sizeof(AwbCapSaInfo::name)).f32(); });
    line.at(VDR_AT(memoryAllocTimeoutInfo))
            .text(sizeof(MemoryAllocTimeoutInfo::itemName))
            .u32()
            .u16()
            .u8();
    if (!line.finish()) {
        VDR_LOGE("VDR::snprintf_s func got error!");
    }
}

}  // namespace vdr2
