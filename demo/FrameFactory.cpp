#include "demo/FrameFactory.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace demo {
namespace {

constexpr double kSpread = 0.02;

enum CaptureType : uint8_t { kPreview = 1, kVideo = 2, kLivePhoto = 5 };

struct Algorithm {
    char name[sizeof(vdr1::AlgoCostTime::name)];
    size_t node;          // where it runs
    double milliseconds;  // it takes there, a part of the node's work
};
using Algorithms = std::vector<Algorithm>;
const Algorithms kPlugins = {{"HDR", 2, 7}, {"BOKEH", 4, 8}, {"BEAUT", 4, 5}, {"EIS", 5, 6}};
const Algorithms kSemantics = {{"FACE", 3, 4}, {"SKY", 3, 3}};

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
    const auto stampAfter = [&](double delay) {
        return fields.csl.stamp + mNoise.around<uint64_t>(delay, kSpread);
    };
    fields.requests = {{0x1001, 2, stampAfter(400e3)}, {0x1002, 2, stampAfter(800e3)}};
    fields.messages = {{0x2001, 1, stampAfter(900e3)}};
}

void FrameFactory::fillAlgorithms(FrameFields& fields, const NodePipeline::Passage& passage) {
    const auto addCosts = [&](const Algorithms& from, std::vector<vdr1::AlgoCostTime>& to) {
        for (const Algorithm& algorithm : from) {
            const double cost = algorithm.milliseconds * passage.slowness + 0.5;
            if (passage.isFinishedAt(algorithm.node)) {  // otherwise it tells none
                to.push_back({{}, mNoise.around<uint8_t>(cost, 0.15)});
                std::memcpy(to.back().name, algorithm.name, sizeof(algorithm.name));
            }
        }
    };
    addCosts(kPlugins, fields.plugins);
    addCosts(kSemantics, fields.semantics);
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
    exposure.short0 = mNoise.around<int16_t>(120, kSpread);  // lens position
    for (size_t i = 0; i < 9; ++i) {
        fields.whiteBalance.gains[i] = mNoise.around<float>(i % 4 == 0 ? 1.0 : -0.25, kSpread);
    }
    fields.whiteBalance.word = mNoise.around<uint32_t>(4200, kSpread);  // kelvin
    fields.scenes = {{"indoor_warm", mNoise.around<float>(0.5, kSpread)}};
}

}  // namespace demo
