#include "demo/SessionPlan.h"

#include <algorithm>

namespace demo {
namespace {

constexpr uint32_t kLivePhotoFrames = 10;
constexpr uint32_t kSnapshotInterval = 50;  // frames

// The middle half.
SessionPlan::Range videoOf(const SessionPlan::Range& frames) {
    const uint32_t quarter = frames.count() / 4;
    return {frames.first + quarter, frames.last - quarter};
}

// Ten frames, or as many as there are, from two thirds of the session on.
SessionPlan::Range livePhotoOf(const SessionPlan::Range& frames) {
    const uint32_t count = std::min(kLivePhotoFrames, frames.count());
    const uint32_t first = frames.first + std::min(frames.count() / 3 * 2, frames.count() - count);
    return {first, first + (count - 1)};
}

// All but one at either end, where that leaves something.
SessionPlan::Range requestedOf(const SessionPlan::Range& livePhoto) {
    return livePhoto.count() > 2 ? SessionPlan::Range{livePhoto.first + 1, livePhoto.last - 1}
                                 : livePhoto;
}

}  // namespace

SessionPlan::SessionPlan(const Options& options)
      : frames{options.firstFrame, options.lastFrame()},
        video(videoOf(frames)),
        livePhoto(livePhotoOf(frames)),
        requested(requestedOf(livePhoto)),
        drops(options.drops) {}

bool SessionPlan::isDrop(uint32_t frame) const {
    return std::binary_search(drops.begin(), drops.end(), frame);
}

bool SessionPlan::isSnapshot(uint32_t frame) const {
    return (frame - frames.first) % kSnapshotInterval == 0;
}

uint16_t SessionPlan::snapshots() const {
    // Counted modulo 65536, as the recorder does.
    return static_cast<uint16_t>((frames.count() - 1) / kSnapshotInterval + 1);
}

}  // namespace demo
