#pragma once

#include <cstdint>

namespace demo {

inline constexpr uint64_t kFrameTime = 33333333;  // nanoseconds, at 30 frames a second

// What happens at which frame. Nothing else happens near the frame that the cause hits, so that the
// cause alone stands out.
struct SessionPlan {
    // The first and the last frame of something.
    struct Range {
        uint32_t first;
        uint32_t last;

        bool contains(uint32_t frame) const { return frame >= first && frame <= last; }
        uint32_t count() const { return last - first + 1; }
    };

    explicit SessionPlan(uint32_t count)
          : frames{1, count},
            video{1 + count / 4, count - count / 4},
            livePhoto{1 + count / 3 * 2, 10 + count / 3 * 2},
            requested{livePhoto.first + 1, livePhoto.last - 1},
            snapshot(count / 6),
            zoomFrom(count / 6 * 5),
            troubled(count / 2),
            hotFrom(troubled - 20) {}

    static constexpr int32_t kSceneMode = 4;

    const Range frames;
    const Range video;      // the last is the frame that ends the recording and is not part of it
    const Range livePhoto;  // frames cached for it
    const Range requested;  // frames of it that the application asks for
    const uint32_t snapshot;
    const uint32_t zoomFrom;  // the user zooms in
    const uint32_t troubled;  // where the cause hits, where there is one
    const uint32_t hotFrom;   // where the device is hot, where that is the cause
};

}  // namespace demo
