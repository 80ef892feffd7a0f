#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "demo/NodePipeline.h"
#include "records/VDRData1Layout.h"

namespace demo {

// What the pipeline gathers about one frame. Both record levels have these fields in this layout.
struct FrameFields {
    uint32_t number;
    vdr1::CslInfo csl;  // request, start of exposure
    uint8_t masterCamera;
    uint8_t manualCapture;
    uint8_t sensorMode;
    uint8_t captureType;
    float zoom;
    vdr1::SysStatusInfo status;
    std::vector<vdr1::FeatureInfo> requests;
    std::vector<vdr1::FeatureInfo> messages;
    std::vector<vdr1::AlgoCostTime> plugins;
    std::vector<vdr1::AlgoCostTime> semantics;
    std::array<vdr1::NodeInfo, NodePipeline::kNodes> nodes;
    std::array<uint64_t, 15> motionStamps;  // five for each of three consumers, as their tags
    vdr1::AeAfAwbInfo exposure;
    vdr1::AwbCapInfo whiteBalance;
    std::vector<vdr1::AwbCapSaInfo> scenes;
};

}  // namespace demo
