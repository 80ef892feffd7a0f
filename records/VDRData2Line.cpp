#include "records/VDRData2.h"
#include "records/defineLine.h"

namespace vdr2 {
namespace {

using Record = VDRData2;

// docs/formats.md names the columns.
VDR_SHOW(frameNumber, u32());
VDR_SHOW(cslInfo, u32().u64());
VDR_SHOW(masterCameraId, u8());
VDR_SHOW(manualCaptureTag, u8());
VDR_SHOW(sensorModeIndex, u8());
VDR_SHOW(zoomRatio, f32());
VDR_SHOW(sysStatusInfo, u32(3).u16().f32(3).u32(6).u16().u8(2));
VDR_SHOW(captureType, u8());
VDR_SHOW(videoAction, u8());
VDR_SHOW(featureRequestStateInfoCount, u8());
VDR_SHOW_EACH(featureRequestStateInfo, u32().u8().u64());
VDR_SHOW(featureMessageTypeInfoCount, u8());
VDR_SHOW_EACH(featureMessageTypeInfo, u32().u8().u64());
VDR_SHOW(pluginAlgoCostTimeCount, u8());
VDR_SHOW_EACH(pluginAlgoCostTime, text(sizeof(AlgoCostTime::name)).u8());
VDR_SHOW(semantAlgoCostTimeCount, u8());
VDR_SHOW_EACH(semantAlgoCostTime, text(sizeof(AlgoCostTime::name)).u8());
VDR_SHOW(nodeInfoCount, u8());
VDR_SHOW_EACH(nodeInfo, u32(3).u64(4));
VDR_SHOW(setGmeNcsDep, u64());
VDR_SHOW(getGmeNcsDepGyro, u64());
VDR_SHOW(getGmeNcsDepOis, u64());
VDR_SHOW(getGmeNcsDepAccel, u64());
VDR_SHOW(getGmeNcsDepMag, u64());
VDR_SHOW(setEisV2NcsDep, u64());
VDR_SHOW(getEisV2NcsDepGyro, u64());
VDR_SHOW(getEisV2NcsDepOis, u64());
VDR_SHOW(getEisV2NcsDepAccel, u64());
VDR_SHOW(getEisV2NcsDepMag, u64());
VDR_SHOW(setEisV3NcsDep, u64());
VDR_SHOW(getEisV3NcsDepGyro, u64());
VDR_SHOW(getEisV3NcsDepOis, u64());
VDR_SHOW(getEisV3NcsDepAccel, u64());
VDR_SHOW(getEisV3NcsDepMag, u64());
VDR_SHOW(ae_af_awb_info, u32(2).f32(6).u32().i16().u32(5).i16());
VDR_SHOW(awbInfo_qawb_cap, f32(9).u32());
VDR_SHOW(awbInfo_qawb_cap_saCount, u8());
VDR_SHOW_EACH(awbInfo_qawb_cap_sa, text(sizeof(AwbCapSaInfo::name)).f32());
VDR_SHOW(memoryAllocTimeoutInfo, text(sizeof(MemoryAllocTimeoutInfo::itemName)).u32().u16().u8());

}  // namespace

VDR_DEFINE_LINE(VDR2_FIELDS)

}  // namespace vdr2
