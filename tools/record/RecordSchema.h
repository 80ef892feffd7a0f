#pragma once

#include <cstddef>
#include <cstdint>

#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "sysstatus/SysStatusCollection.h"
#include "tools/record/Column.h"

// Names, types, places and meanings of everything in a frame record, taken from the layout
// headers. All readers and writers of vdrdump walk these tables.
namespace vdrdump {

using Layout = vdr2::VDRData2;

#define VDR_SIZE_OF_ONE(Type, member) sizeof(std::remove_extent_t<decltype(Type::member)>)
#define VDR_SCALAR(field, unit, meaning)                                                          \
    makeItem(#field, #field,                                                                      \
             {kindOf<decltype(Layout::field)>(), offsetof(Layout, field), sizeof(Layout::field)}, \
             unit, meaning)
#define VDR_MEMBER_AS(field, Type, member, KindType, unit, meaning)                    \
    makeItem(#field, #field "_" #member,                                               \
             {kindOf<decltype(KindType::member)>(),                                    \
              offsetof(Layout, field) + offsetof(Type, member), sizeof(Type::member)}, \
             unit, meaning)
#define VDR_MEMBER(field, Type, member, unit, meaning) \
    VDR_MEMBER_AS(field, Type, member, Type, unit, meaning)
#define VDR_STATUS(member, unit, meaning)                                                    \
    VDR_MEMBER_AS(sysStatusInfo, vdr2::SysStatusInfo, member, zk::SysStatusCollection, unit, \
                  meaning)
#define VDR_INDEXED(field, Type, member, index, meaning)         \
    makeItem(#field, #field "_" #member "_" #index,              \
             {kindOf<decltype(Type::member)>(),                  \
              offsetof(Layout, field) + offsetof(Type, member) + \
                      VDR_SIZE_OF_ONE(Type, member) * (index),   \
              VDR_SIZE_OF_ONE(Type, member)},                    \
             "", meaning)
#define VDR_ELEMENT(field, Type, member, meaning, isId)                                          \
    makeColumn(#field, #member,                                                                  \
               {kindOf<decltype(Type::member)>(), offsetof(Type, member), sizeof(Type::member)}, \
               "", meaning, isId)
#define VDR_ELEMENT_INDEXED(field, Type, member, index, meaning, isId)            \
    makeColumn(#field, #member "_" #index,                                        \
               {kindOf<decltype(Type::member)>(),                                 \
                offsetof(Type, member) + VDR_SIZE_OF_ONE(Type, member) * (index), \
                VDR_SIZE_OF_ONE(Type, member)},                                   \
               "", meaning, isId)
#define VDR_ARRAY_FIELD(field, count, columns)                                                 \
    makeArray(#field, offsetof(Layout, count), offsetof(Layout, field), sizeof(Layout::field), \
              VDR_SIZE_OF_ONE(Layout, field), columns)

inline constexpr Column kFeatureRequest[] = {
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, id, "feature asked", true),
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, state, "state of the request",
                    false),
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, stamp, "when it was asked", false)};
inline constexpr Column kFeatureMessage[] = {
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, id, "feature", true),
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, state, "type of the message", false),
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, stamp, "when it was exchanged",
                    false)};
inline constexpr Column kPluginAlgo[] = {
        VDR_ELEMENT(pluginAlgoCostTime, vdr2::AlgoCostTime, name, "plug-in algorithm", false),
        VDR_ELEMENT(pluginAlgoCostTime, vdr2::AlgoCostTime, cost, "time it spent on the frame",
                    false)};
inline constexpr Column kSemantAlgo[] = {
        VDR_ELEMENT(semantAlgoCostTime, vdr2::AlgoCostTime, name, "semantic algorithm", false),
        VDR_ELEMENT(semantAlgoCostTime, vdr2::AlgoCostTime, cost, "time it spent on the frame",
                    false)};
inline constexpr Column kNode[] = {
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 0, "the three ids name the node", true),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 1, "the three ids name the node", true),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 2, "the three ids name the node", true),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 0,
                            "frame queued before the node; 0 never", false),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 1, "node started; 0 never", false),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 2, "node finished; 0 never", false),
        VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 3, "frame handed on; 0 never",
                            false)};
inline constexpr Column kAwbCapSa[] = {
        VDR_ELEMENT(awbInfo_qawb_cap_sa, vdr2::AwbCapSaInfo, name, "scene", false),
        VDR_ELEMENT(awbInfo_qawb_cap_sa, vdr2::AwbCapSaInfo, value, "its value", false)};

inline constexpr ArrayField kRequests =
        VDR_ARRAY_FIELD(featureRequestStateInfo, featureRequestStateInfoCount, kFeatureRequest);
inline constexpr ArrayField kMessages =
        VDR_ARRAY_FIELD(featureMessageTypeInfo, featureMessageTypeInfoCount, kFeatureMessage);
inline constexpr ArrayField kPluginCosts =
        VDR_ARRAY_FIELD(pluginAlgoCostTime, pluginAlgoCostTimeCount, kPluginAlgo);
inline constexpr ArrayField kSemantCosts =
        VDR_ARRAY_FIELD(semantAlgoCostTime, semantAlgoCostTimeCount, kSemantAlgo);
inline constexpr ArrayField kNodes = VDR_ARRAY_FIELD(nodeInfo, nodeInfoCount, kNode);
inline constexpr ArrayField kAwbCapSas =
        VDR_ARRAY_FIELD(awbInfo_qawb_cap_sa, awbInfo_qawb_cap_saCount, kAwbCapSa);

inline constexpr const ArrayField* kArrays[] = {&kRequests,    &kMessages, &kPluginCosts,
                                                &kSemantCosts, &kNodes,    &kAwbCapSas};

// Everything, as it stands in a record and in a text line.
inline constexpr Item kItems[] = {
        VDR_SCALAR(frameNumber, "", "number of the frame in its camera session"),
        VDR_MEMBER(cslInfo, vdr2::CslInfo, value, "", "of the CSL layer"),
        VDR_MEMBER(cslInfo, vdr2::CslInfo, stamp, "", "when the frame was taken, of the CSL layer"),
        VDR_SCALAR(masterCameraId, "", "camera that leads, of several"),
        VDR_SCALAR(manualCaptureTag, "", "mark of a manual capture"),
        VDR_SCALAR(sensorModeIndex, "", "mode of the sensor"),
        VDR_SCALAR(zoomRatio, "", "zoom"),
        VDR_STATUS(cpu0Freq, "kHz", "frequency of processor 0"),
        VDR_STATUS(cpu4Freq, "kHz", "frequency of processor 4"),
        VDR_STATUS(cpu7Freq, "kHz", "frequency of processor 7"),
        VDR_STATUS(cpuUsage, "%", "share of all processors that the camera took"),
        VDR_STATUS(loadAvg1, "", "runnable tasks, mean over 1 minute"),
        VDR_STATUS(loadAvg5, "", "runnable tasks, mean over 5 minutes"),
        VDR_STATUS(loadAvg15, "", "runnable tasks, mean over 15 minutes"),
        VDR_STATUS(shellFrontTemp, "", "temperature of the shell's front, as the driver states it"),
        VDR_STATUS(shellBackTemp, "", "temperature of the shell's back, as the driver states it"),
        VDR_STATUS(shellFrameTemp, "", "temperature of the shell's frame, as the driver states it"),
        VDR_STATUS(memFree, "kB", "free memory"),
        VDR_STATUS(memAvailable, "kB", "available memory"),
        VDR_STATUS(usedMem, "", "memory that captures hold"),
        VDR_STATUS(sceneMode, "", "scene mode of the session, low 16 bits"),
        VDR_STATUS(thermalLevel, "", "0 cool to 15"),
        VDR_STATUS(thermalEscapeState, "", "0 to 3"),
        VDR_SCALAR(captureType, "", "kind of capture"),
        VDR_SCALAR(videoAction, "", "1 a recording starts, 2 it has ended"),
        VDR_SCALAR(featureRequestStateInfoCount, "", "feature requests in use"),
        makeItem(kRequests, "what was asked of the features"),
        VDR_SCALAR(featureMessageTypeInfoCount, "", "feature messages in use"),
        makeItem(kMessages, "messages exchanged with the features"),
        VDR_SCALAR(pluginAlgoCostTimeCount, "", "plug-in costs in use"),
        makeItem(kPluginCosts, "what plug-in algorithms cost"),
        VDR_SCALAR(semantAlgoCostTimeCount, "", "semantic costs in use"),
        makeItem(kSemantCosts, "what semantic algorithms cost"),
        VDR_SCALAR(nodeInfoCount, "", "nodes in use"),
        makeItem(kNodes, "nodes of the pipeline that handled the frame"),
        VDR_SCALAR(setGmeNcsDep, "", "dependency of motion estimation set"),
        VDR_SCALAR(getGmeNcsDepGyro, "", "gyroscope data for motion estimation obtained"),
        VDR_SCALAR(getGmeNcsDepOis, "", "optical stabiliser data for motion estimation obtained"),
        VDR_SCALAR(getGmeNcsDepAccel, "", "accelerometer data for motion estimation obtained"),
        VDR_SCALAR(getGmeNcsDepMag, "", "magnetometer data for motion estimation obtained"),
        VDR_SCALAR(setEisV2NcsDep, "", "dependency of stabilisation 2 set"),
        VDR_SCALAR(getEisV2NcsDepGyro, "", "gyroscope data for stabilisation 2 obtained"),
        VDR_SCALAR(getEisV2NcsDepOis, "", "optical stabiliser data for stabilisation 2 obtained"),
        VDR_SCALAR(getEisV2NcsDepAccel, "", "accelerometer data for stabilisation 2 obtained"),
        VDR_SCALAR(getEisV2NcsDepMag, "", "magnetometer data for stabilisation 2 obtained"),
        VDR_SCALAR(setEisV3NcsDep, "", "dependency of stabilisation 3 set"),
        VDR_SCALAR(getEisV3NcsDepGyro, "", "gyroscope data for stabilisation 3 obtained"),
        VDR_SCALAR(getEisV3NcsDepOis, "", "optical stabiliser data for stabilisation 3 obtained"),
        VDR_SCALAR(getEisV3NcsDepAccel, "", "accelerometer data for stabilisation 3 obtained"),
        VDR_SCALAR(getEisV3NcsDepMag, "", "magnetometer data for stabilisation 3 obtained"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words, 0,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words, 1,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 0,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 1,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 2,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 3,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 4,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 5,
                    "exposure, focus and white balance"),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, word2, "",
                   "exposure, focus and white balance"),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, short0, "",
                   "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 0,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 1,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 2,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 3,
                    "exposure, focus and white balance"),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 4,
                    "exposure, focus and white balance"),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, short1, "",
                   "exposure, focus and white balance"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 0, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 1, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 2, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 3, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 4, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 5, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 6, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 7, "white balance of a capture"),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 8, "white balance of a capture"),
        VDR_MEMBER(awbInfo_qawb_cap, vdr2::AwbCapInfo, word, "", "white balance of a capture"),
        VDR_SCALAR(awbInfo_qawb_cap_saCount, "", "white-balance scenes in use"),
        makeItem(kAwbCapSas, "white-balance scenes of a capture"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, itemName, "",
                   "slow allocation: of what"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, allocSizeKB, "KiB",
                   "slow allocation: size"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, allocTimeSec, "s",
                   "slow allocation: how long it took"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, itemType, "",
                   "slow allocation: kind of memory"),
};

#undef VDR_SIZE_OF_ONE
#undef VDR_SCALAR
#undef VDR_MEMBER_AS
#undef VDR_MEMBER
#undef VDR_STATUS
#undef VDR_INDEXED
#undef VDR_ELEMENT
#undef VDR_ELEMENT_INDEXED
#undef VDR_ARRAY_FIELD

// The tables cover the layout without a gap, elements included: a field that is added to the
// layout and not here does not compile.
constexpr bool coversLayout() {
    size_t at = 0;
    for (const Item& item : kItems) {
        if (item.array == nullptr) {
            if (item.column.offset != at) {
                return false;
            }
            at += item.column.size;
            continue;
        }
        const ArrayField& array = *item.array;
        size_t inElement = 0;
        for (size_t i = 0; i < array.columnCount; ++i) {
            if (array.columns[i].offset != inElement) {
                return false;
            }
            inElement += array.columns[i].size;
        }
        if (array.offset != at || inElement != array.elementSize) {
            return false;
        }
        at += size_t{array.elementSize} * array.capacity;
    }
    return at == sizeof(Layout);
}
static_assert(coversLayout());

// The column that begins there, in the record itself; null where none does.
constexpr const Column* columnAt(size_t offset) {
    for (const Item& item : kItems) {
        if (item.array == nullptr && item.column.offset == offset) {
            return &item.column;
        }
    }
    return nullptr;
}

}  // namespace vdrdump
