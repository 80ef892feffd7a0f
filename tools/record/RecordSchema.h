#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "sysstatus/SysStatusCollection.h"

// Names, types and places of everything in a frame record, taken from the layout headers. The
// readers and sinks of vdrdump walk these tables; the curves of a plot name their members.
namespace vdrdump {

using Layout = vdr2::VDRData2;

enum class Kind : uint8_t { U8, U16, U32, U64, I16, I32, F32, Text };

struct Column {
    const char* field;  // of the layout
    const char* name;   // stable: header of csv, keys of ndjson, columns of sqlite
    Kind kind;
    uint16_t offset;  // in the record; for a column of an array, in the element
    uint16_t size;
    const char* unit;  // "" where none is known
};

struct ArrayField {
    const char* name;
    uint16_t countOffset;
    uint16_t offset;
    uint16_t elementSize;
    uint16_t capacity;
    const Column* columns;
    uint16_t columnCount;

    const Column* begin() const { return columns; }
    const Column* end() const { return columns + columnCount; }
};

// In layout order: a column, or an array behind its count's column.
struct Item {
    Column column;
    const ArrayField* array;  // null for a column
};

template <typename T>
constexpr Kind kindOf() {
    using Scalar = std::remove_extent_t<T>;
    if constexpr (std::is_same_v<Scalar, char>) {
        return Kind::Text;
    } else if constexpr (std::is_same_v<Scalar, float>) {
        return Kind::F32;
    } else if constexpr (std::is_signed_v<Scalar>) {
        static_assert(sizeof(Scalar) == 2 || sizeof(Scalar) == 4);
        return sizeof(Scalar) == 2 ? Kind::I16 : Kind::I32;
    } else {
        static_assert(std::is_unsigned_v<Scalar>);
        return sizeof(Scalar) == 1   ? Kind::U8
               : sizeof(Scalar) == 2 ? Kind::U16
               : sizeof(Scalar) == 4 ? Kind::U32
                                     : Kind::U64;
    }
}

constexpr Column makeColumn(const char* field, const char* name, Kind kind, size_t offset,
                            size_t size, const char* unit) {
    return {field, name, kind, static_cast<uint16_t>(offset), static_cast<uint16_t>(size), unit};
}

constexpr Item makeItem(const char* field, const char* name, Kind kind, size_t offset, size_t size,
                        const char* unit) {
    return {makeColumn(field, name, kind, offset, size, unit), nullptr};
}

constexpr Item makeItem(const ArrayField& array) {
    return {makeColumn(array.name, array.name, Kind::U8, 0, 0, ""), &array};
}

template <size_t kColumns>
constexpr ArrayField makeArray(const char* name, size_t countOffset, size_t offset, size_t size,
                               size_t elementSize, const Column (&columns)[kColumns]) {
    return {name,
            static_cast<uint16_t>(countOffset),
            static_cast<uint16_t>(offset),
            static_cast<uint16_t>(elementSize),
            static_cast<uint16_t>(size / elementSize),
            columns,
            static_cast<uint16_t>(kColumns)};
}

#define VDR_SIZE_OF_ONE(Type, member) sizeof(std::remove_extent_t<decltype(Type::member)>)
#define VDR_SCALAR(field, unit)                                                          \
    makeItem(#field, #field, kindOf<decltype(Layout::field)>(), offsetof(Layout, field), \
             sizeof(Layout::field), unit)
#define VDR_MEMBER_AS(field, Type, member, KindType, unit)                     \
    makeItem(#field, #field "_" #member, kindOf<decltype(KindType::member)>(), \
             offsetof(Layout, field) + offsetof(Type, member), sizeof(Type::member), unit)
#define VDR_MEMBER(field, Type, member, unit) VDR_MEMBER_AS(field, Type, member, Type, unit)
#define VDR_STATUS(member, unit) \
    VDR_MEMBER_AS(sysStatusInfo, vdr2::SysStatusInfo, member, zk::SysStatusCollection, unit)
#define VDR_INDEXED(field, Type, member, index)                                       \
    makeItem(#field, #field "_" #member "_" #index, kindOf<decltype(Type::member)>(), \
             offsetof(Layout, field) + offsetof(Type, member) +                       \
                     VDR_SIZE_OF_ONE(Type, member) * (index),                         \
             VDR_SIZE_OF_ONE(Type, member), "")
#define VDR_ELEMENT(field, Type, member)                                                  \
    makeColumn(#field, #member, kindOf<decltype(Type::member)>(), offsetof(Type, member), \
               sizeof(Type::member), "")
#define VDR_ELEMENT_INDEXED(field, Type, member, index)                          \
    makeColumn(#field, #member "_" #index, kindOf<decltype(Type::member)>(),     \
               offsetof(Type, member) + VDR_SIZE_OF_ONE(Type, member) * (index), \
               VDR_SIZE_OF_ONE(Type, member), "")
#define VDR_ARRAY_FIELD(field, count, columns)                                                 \
    makeArray(#field, offsetof(Layout, count), offsetof(Layout, field), sizeof(Layout::field), \
              VDR_SIZE_OF_ONE(Layout, field), columns)

inline constexpr Column kFeatureRequest[] = {
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, id),
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, state),
        VDR_ELEMENT(featureRequestStateInfo, vdr2::FeatureInfo, stamp)};
inline constexpr Column kFeatureMessage[] = {
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, id),
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, state),
        VDR_ELEMENT(featureMessageTypeInfo, vdr2::FeatureInfo, stamp)};
inline constexpr Column kPluginAlgo[] = {VDR_ELEMENT(pluginAlgoCostTime, vdr2::AlgoCostTime, name),
                                         VDR_ELEMENT(pluginAlgoCostTime, vdr2::AlgoCostTime, cost)};
inline constexpr Column kSemantAlgo[] = {VDR_ELEMENT(semantAlgoCostTime, vdr2::AlgoCostTime, name),
                                         VDR_ELEMENT(semantAlgoCostTime, vdr2::AlgoCostTime, cost)};
inline constexpr Column kNode[] = {VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 0),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 1),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, ids, 2),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 0),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 1),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 2),
                                   VDR_ELEMENT_INDEXED(nodeInfo, vdr2::NodeInfo, stamps, 3)};
inline constexpr Column kAwbCapSa[] = {VDR_ELEMENT(awbInfo_qawb_cap_sa, vdr2::AwbCapSaInfo, name),
                                       VDR_ELEMENT(awbInfo_qawb_cap_sa, vdr2::AwbCapSaInfo, value)};

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
        VDR_SCALAR(frameNumber, ""),
        VDR_MEMBER(cslInfo, vdr2::CslInfo, value, ""),
        VDR_MEMBER(cslInfo, vdr2::CslInfo, stamp, ""),
        VDR_SCALAR(masterCameraId, ""),
        VDR_SCALAR(manualCaptureTag, ""),
        VDR_SCALAR(sensorModeIndex, ""),
        VDR_SCALAR(zoomRatio, ""),
        VDR_STATUS(cpu0Freq, "kHz"),
        VDR_STATUS(cpu4Freq, "kHz"),
        VDR_STATUS(cpu7Freq, "kHz"),
        VDR_STATUS(cpuUsage, "%"),
        VDR_STATUS(loadAvg1, ""),
        VDR_STATUS(loadAvg5, ""),
        VDR_STATUS(loadAvg15, ""),
        VDR_STATUS(shellFrontTemp, ""),
        VDR_STATUS(shellBackTemp, ""),
        VDR_STATUS(shellFrameTemp, ""),
        VDR_STATUS(memFree, "kB"),
        VDR_STATUS(memAvailable, "kB"),
        VDR_STATUS(usedMem, ""),
        VDR_STATUS(sceneMode, ""),
        VDR_STATUS(thermalLevel, ""),
        VDR_STATUS(thermalEscapeState, ""),
        VDR_SCALAR(captureType, ""),
        VDR_SCALAR(videoAction, ""),
        VDR_SCALAR(featureRequestStateInfoCount, ""),
        makeItem(kRequests),
        VDR_SCALAR(featureMessageTypeInfoCount, ""),
        makeItem(kMessages),
        VDR_SCALAR(pluginAlgoCostTimeCount, ""),
        makeItem(kPluginCosts),
        VDR_SCALAR(semantAlgoCostTimeCount, ""),
        makeItem(kSemantCosts),
        VDR_SCALAR(nodeInfoCount, ""),
        makeItem(kNodes),
        VDR_SCALAR(setGmeNcsDep, ""),
        VDR_SCALAR(getGmeNcsDepGyro, ""),
        VDR_SCALAR(getGmeNcsDepOis, ""),
        VDR_SCALAR(getGmeNcsDepAccel, ""),
        VDR_SCALAR(getGmeNcsDepMag, ""),
        VDR_SCALAR(setEisV2NcsDep, ""),
        VDR_SCALAR(getEisV2NcsDepGyro, ""),
        VDR_SCALAR(getEisV2NcsDepOis, ""),
        VDR_SCALAR(getEisV2NcsDepAccel, ""),
        VDR_SCALAR(getEisV2NcsDepMag, ""),
        VDR_SCALAR(setEisV3NcsDep, ""),
        VDR_SCALAR(getEisV3NcsDepGyro, ""),
        VDR_SCALAR(getEisV3NcsDepOis, ""),
        VDR_SCALAR(getEisV3NcsDepAccel, ""),
        VDR_SCALAR(getEisV3NcsDepMag, ""),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words, 0),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words, 1),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 0),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 1),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 2),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 3),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 4),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, ratios, 5),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, word2, ""),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, short0, ""),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 0),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 1),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 2),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 3),
        VDR_INDEXED(ae_af_awb_info, vdr2::AeAfAwbInfo, words3, 4),
        VDR_MEMBER(ae_af_awb_info, vdr2::AeAfAwbInfo, short1, ""),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 0),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 1),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 2),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 3),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 4),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 5),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 6),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 7),
        VDR_INDEXED(awbInfo_qawb_cap, vdr2::AwbCapInfo, gains, 8),
        VDR_MEMBER(awbInfo_qawb_cap, vdr2::AwbCapInfo, word, ""),
        VDR_SCALAR(awbInfo_qawb_cap_saCount, ""),
        makeItem(kAwbCapSas),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, itemName, ""),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, allocSizeKB, "KiB"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, allocTimeSec, "s"),
        VDR_MEMBER(memoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, itemType, ""),
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

}  // namespace vdrdump
