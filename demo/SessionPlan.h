#pragma once

#include <cstdint>
#include <vector>

#include "demo/Options.h"

namespace demo {

// What happens at which frame. Everything follows from the options, so that what a session has
// written can be worked out again afterwards.
struct SessionPlan {
    // The first and the last frame of something.
    struct Range {
        uint32_t first;
        uint32_t last;

        bool contains(uint32_t frame) const { return frame >= first && frame <= last; }
        uint32_t count() const { return last - first + 1; }
    };

    explicit SessionPlan(const Options& options);

    bool isDrop(uint32_t frame) const;
    bool isSnapshot(uint32_t frame) const;
    uint16_t snapshots() const;

    static constexpr int32_t kSceneMode = 4;

    const Range frames;
    const Range video;      // the last is the frame that ends the recording and is not part of it
    const Range livePhoto;  // frames cached for it
    const Range requested;  // frames of it that the application asks for
    const std::vector<uint32_t> drops;
};

}  // namespace demo
