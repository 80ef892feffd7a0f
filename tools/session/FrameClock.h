#pragma once

#include <cstdint>
#include <optional>

namespace vdrdump {

// The clock of a session's stamps, whose unit no dump states: taken from how far the stamps of two
// neighbouring frames are apart, which for 1 to 1000 frames a second leaves one unit only.
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
        const double interval = static_cast<double>(mLastStamp - mFirstStamp) / frames();
        for (const double unit : {1e3, 1e6, 1e9}) {
            if (interval >= unit / 1e3 && interval < unit) {
                return unit;
            }
        }
        return std::nullopt;
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
