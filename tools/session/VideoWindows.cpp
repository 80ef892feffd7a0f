#include "tools/session/VideoWindows.h"

namespace vdrdump {
namespace {

constexpr uint8_t kStarts = 1;
constexpr uint8_t kHasEnded = 2;

}  // namespace

void VideoWindows::add(uint32_t frame, uint8_t videoAction) {
    if (videoAction == kStarts) {
        open({frame, 0, true, false});
        mIsOpen = true;
    } else if (videoAction == kHasEnded) {
        if (!mIsOpen) {
            open({0, 0, false, false});
        }
        if (mCount == mWindows.size()) {
            mWindows.back().last = frame - 1;
            mWindows.back().endSeen = true;
        }
        mIsOpen = false;
    }
}

void VideoWindows::open(const VideoWindow& window) {
    ++mCount;
    if (mWindows.size() < kMost) {
        mWindows.push_back(window);
    }
}

}  // namespace vdrdump
