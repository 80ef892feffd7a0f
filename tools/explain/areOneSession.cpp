#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/explain/LossCases.h"
#include "tools/explain/clocksOf.h"

namespace vdrdump {
namespace {

constexpr size_t kStamp = offsetof(Layout, cslInfo) + offsetof(vdr2::CslInfo, stamp);

// Floats are left out: a text line has six decimals of them.
bool isSameFrame(const Record& a, const Record& b) {
    const auto isSame = [&](size_t offset, size_t size) {
        return a.known < offset + size || b.known < offset + size ||
               std::memcmp(a.bytes + offset, b.bytes + offset, size) == 0;
    };
    return isSame(offsetof(Layout, cslInfo), sizeof(Layout::cslInfo)) &&
           isSame(offsetof(Layout, masterCameraId), 3) && isSame(kNodes.offset, kNodes.elementSize);
}

// The stamps of two stretches of frames that do not meet: as far apart as their numbers say.
bool goesOn(const FrameMap& earlier, const FrameMap& later) {
    constexpr double kMostOff = 0.25;
    const StampClocks clocks = clocksOf(earlier, std::nullopt);
    const double interval = clocks.frameInterval;
    if (!clocks.hasFrameStamps || interval == 0 ||
        earlier.rbegin()->first >= later.begin()->first) {
        return false;
    }
    const auto from = earlier.rbegin()->second->view().read<uint64_t>(kStamp);
    const auto to = later.begin()->second->view().read<uint64_t>(kStamp);
    const double frames = later.begin()->first - earlier.rbegin()->first;
    return from != 0 && to > from &&
           std::fabs(frameTime(from, to, clocks) / (frames * interval) - 1) < kMostOff;
}

}  // namespace

bool areOneSession(const FrameMap& a, const FrameMap& b) {
    size_t common = 0;
    size_t same = 0;
    for (const auto& [frame, record] : a) {
        if (const auto other = b.find(frame); other != b.end()) {
            ++common;
            same += isSameFrame(record->view(), other->second->view()) ? 1 : 0;
        }
    }
    if (common != 0) {
        return 2 * same > common;  // a damaged record is no reason to part them
    }
    return !a.empty() && !b.empty() && (goesOn(a, b) || goesOn(b, a));
}

}  // namespace vdrdump
