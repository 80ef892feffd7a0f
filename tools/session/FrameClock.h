#pragma once

#include <cstdint>
#include <optional>

namespace vdrdump {

// Ticks per second of a clock by which two neighbouring frames are `interval` ticks apart: for 1 to
// 1000 frames a second one unit only comes into question. None for what is no camera.
inline std::optional<double> ticksPerSecondOf(double interval) {
    for (const double unit : {1e3, 1e6, 1e9}) {
        if (interval >= unit / 1e3 && interval < unit) {
            return unit;
        }
    }
    return std::nullopt;
}

// The clock of a session's stamps, whose unit no dump states.
class FrameClock {
public:
    // Stamps that do not go up with the frames, and 0, which is none, are passed over.
    void add(uint32_t frame, uint64_t stamp) {
        if (stamp == 0) {
            return;
        }
        if (mFirstStamp == 0) {
            mFirstFrame = mLastFrame = frame;
            mFirstStamp = mLastStamp = stamp;
        } else if (frame > mLastFrame && stamp > mLastStamp) {
            mLastFrame = frame;
            mLastStamp = stamp;
        }
    }

    // None where there are no two stamps, or their distance is that of no camera.
    std::optional<double> ticksPerSecond() const {
        if (mLastFrame == mFirstFrame) {
            return std::nullopt;
        }
        return ticksPerSecondOf(static_cast<double>(mLastStamp - mFirstStamp) / frames());
    }
    // Only where the unit is known.
    double seconds() const {
        return static_cast<double>(mLastStamp - mFirstStamp) / *ticksPerSecond();
    }
    double framesPerSecond() const { return frames() / seconds(); }

private:
    double frames() const { return static_cast<double>(mLastFrame - mFirstFrame); }

    uint32_t mFirstFrame = 0;
    uint32_t mLastFrame = 0;
    uint64_t mFirstStamp = 0;
    uint64_t mLastStamp = 0;
};

}  // namespace vdrdump
