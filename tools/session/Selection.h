#pragma once

#include <cstdint>
#include <optional>

#include "tools/record/Record.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

// Which records of a dump are wanted: all that nothing speaks against.
struct Selection {
    static constexpr uint32_t kAround = 30;  // a second, at 30 frames a second

    std::optional<FrameRange> frames;
    uint32_t session = 0;          // 0: all
    std::optional<uint32_t> lost;  // this frame was lost, whatever the file is called

    static FrameRange around(uint32_t frame, uint32_t count) {
        return {frame - (frame < count ? frame : count),
                frame > UINT32_MAX - count ? UINT32_MAX : frame + count};
    }

    // The same without a choice, for those who look at all records and choose themselves.
    Selection wholeDump() const { return {FrameRange{0, UINT32_MAX}, 0, lost}; }

    bool isAll() const { return !frames && session == 0 && !lost; }
    bool wantsSession(uint32_t number) const { return session == 0 || session == number; }

    // The frames around the lost one, unless others were asked for.
    FrameRange range() const {
        return frames ? *frames : lost ? around(*lost, kAround) : FrameRange{0, UINT32_MAX};
    }

    bool wants(const Record& record) const {
        if (isAll()) {
            return true;
        }
        const FrameRange wanted = range();
        const bool isInRange = record.isMisnumbered ? wanted.first == 0 && wanted.last == UINT32_MAX
                                                    : record.frame() >= wanted.first &&
                                                              record.frame() <= wanted.last;
        return isInRange && wantsSession(record.session);
    }
};

}  // namespace vdrdump
