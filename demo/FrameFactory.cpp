#include "demo/FrameFactory.h"

#include <algorithm>
#include <string_view>

namespace demo {
namespace {

constexpr double kSpread = 0.02;

enum CaptureType : uint8_t { kPreview = 1, kVideo = 2, kLivePhoto = 5 };

struct Algorithm {
    std::string_view name;
    size_t node;          // where it runs
    double milliseconds;  // it takes there, a part of the node's work
};
constexpr Algorithm kPlugins[] = {{"HDR", 2, 7}, {"BOKEH", 4, 8}, {"BEAUT", 4, 5}, {"EIS", 5, 6}};
constexpr Algorithm kSemantics[] = {{"FACE", 3, 4}, {"SKY", 3, 3}};

template <size_t Size>
void copyName(char (&name)[Size], std::string_view text) {
    std::copy_n(text.begin(), std::min(text.size(), Size - 1), name);
}

}  // namespace

FrameFields FrameFactory::make(uint32_t frame, uint64_t exposedAt,
                               const NodePipeline::Passage& passage,
                               const vdr1::SysStatusInfo& status) {
    FrameFields fields{};
    fields.number = frame;
    fields.csl = {frame, exposedAt};
    fields.status = status;
    fields.nodes = passage.nodes;
    fillHead(fields);
    fillFeatures(fields);
    fillAlgorithms(fields, passage);
    fillImage(fields);
    return fields;
}

void FrameFactory::fillHead(FrameFields& fields) const {
    const uint32_t frame = fields.number;
    const bool isVideo = mPlan.video.contains(frame) && frame != mPlan.video.last;
    // From 1.0 to 3.0 in tenths; the telephoto camera takes over at 2.0.
    const uint32_t tenths =
            frame < mPlan.zoomFrom ? 10 : std::min(10 + frame - mPlan.zoomFrom, 30U);
    fields.zoom = 0.1F * static_cast<float>(tenths);
    fields.masterCamera = tenths < 20 ? 0 : 2;
    fields.manualCapture = frame == mPlan.snapshot ? 1 : 0;
    fields.sensorMode = isVideo ? 3 : 1;
    fields.captureType = mPlan.livePhoto.contains(frame) ? kLivePhoto : isVideo ? kVideo : kPreview;
}

void FrameFactory::fillFeatures(FrameFields& fields) {
    for (const uint32_t id : {0x1001U, 0x1002U, 0x1003U}) {
        const auto delay = mNoise.around<uint64_t>(400e3 * (id & 0xf), kSpread);
        fields.requests.push_back({id, 2, fields.csl.stamp + delay});
    }
    for (const uint32_t id : {0x2001U, 0x2002U}) {
        const auto delay = mNoise.around<uint64_t>(900e3 * (id & 0xf), kSpread);
        fields.messages.push_back({id, 1, fields.csl.stamp + delay});
    }
}

// An algorithm whose node has not come to its end tells no cost.
void FrameFactory::fillAlgorithms(FrameFields& fields, const NodePipeline::Passage& passage) {
    const auto costOf = [&](const Algorithm& algorithm) {
        vdr1::AlgoCostTime cost{};
        copyName(cost.name, algorithm.name);
        cost.cost = mNoise.around<uint8_t>(algorithm.milliseconds * passage.slowness + 0.5, 0.05);
        return cost;
    };
    for (const Algorithm& plugin : kPlugins) {
        if (passage.isFinishedAt(plugin.node)) {
            fields.plugins.push_back(costOf(plugin));
        }
    }
    for (const Algorithm& semantic : kSemantics) {
        if (passage.isFinishedAt(semantic.node)) {
            fields.semantics.push_back(costOf(semantic));
        }
    }
}

void FrameFactory::fillImage(FrameFields& fields) {
    for (uint64_t& stamp : fields.motionStamps) {
        stamp = fields.csl.stamp - mNoise.around<uint64_t>(2e6, kSpread);
    }
    vdr1::AeAfAwbInfo& exposure = fields.exposure;
    exposure.words[0] = mNoise.around<uint32_t>(16000, kSpread);  // exposure time, microseconds
    exposure.words[1] = mNoise.around<uint32_t>(200, kSpread);    // sensitivity
    for (size_t i = 0; i < 6; ++i) {
        exposure.ratios[i] = mNoise.around<float>(1.25, kSpread);
    }
    exposure.word2 = mNoise.around<uint32_t>(50, kSpread);   // luma target
    exposure.short0 = mNoise.around<int16_t>(120, kSpread);  // lens position
    for (size_t i = 0; i < 5; ++i) {
        exposure.words3[i] = mNoise.around<uint32_t>(512, kSpread);
    }
    exposure.short1 = -12;
    for (size_t i = 0; i < 9; ++i) {
        fields.whiteBalance.gains[i] = mNoise.around<float>(i % 4 == 0 ? 1.0 : -0.25, kSpread);
    }
    fields.whiteBalance.word = mNoise.around<uint32_t>(4200, kSpread);  // kelvin
    for (const char* const name : {"skin", "indoor_warm"}) {
        vdr1::AwbCapSaInfo scene{};
        copyName(scene.name, name);
        scene.value = mNoise.around<float>(0.5, kSpread);
        fields.scenes.push_back(scene);
    }
}

}  // namespace demo
