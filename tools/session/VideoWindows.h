#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vdrdump {

// A video recording as the records of one session show it: its last frame is the one before the
// frame that marks the end.
struct VideoWindow {
    uint32_t first = 0;
    uint32_t last = 0;
    bool startSeen = false;
    bool endSeen = false;
};

// Finds the video recordings of one session from the marks in its records.
class VideoWindows {
public:
    static constexpr size_t kMost = 1024;

    void add(uint32_t frame, uint8_t videoAction);

    // All recordings, also those beyond the ones listed.
    uint64_t count() const { return mCount; }
    // The first ones. Where a start or an end was not seen, the range has no frame there.
    const std::vector<VideoWindow>& windows() const { return mWindows; }

private:
    void open(const VideoWindow& window);

    std::vector<VideoWindow> mWindows;
    uint64_t mCount = 0;
    bool mIsOpen = false;
};

}  // namespace vdrdump
