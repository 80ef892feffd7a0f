#pragma once

#include <cstdint>

#include "demo/FrameFields.h"
#include "demo/Noise.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"

namespace demo {

// Makes up what a camera would tell about each frame of the session. One thread.
class FrameFactory {
public:
    // `plan` must outlive this.
    FrameFactory(const Options& options, const SessionPlan& plan)
          : mPlan(plan), mNoise(options.seed + 1) {}

    FrameFields make(uint32_t frame, uint64_t exposedAt, const NodePipeline::Passage& passage,
                     const vdr1::SysStatusInfo& status);

private:
    void fillHead(FrameFields& fields) const;
    void fillFeatures(FrameFields& fields);
    void fillAlgorithms(FrameFields& fields, const NodePipeline::Passage& passage);
    void fillImage(FrameFields& fields);

    const SessionPlan& mPlan;
    Noise mNoise;
};

}  // namespace demo
