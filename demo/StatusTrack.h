#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "records/VDRData1.h"

namespace demo {

// Which device status was written into which frame: the one part of a live session that cannot be
// worked out again. One thread.
class StatusTrack {
public:
    using Bytes = std::array<uint8_t, sizeof(vdr1::SysStatusInfo)>;

    // Frames come in ascending order. Keeps changes only, about one a second.
    void note(uint32_t frame, const Bytes& status);
    // All zero before the first note.
    Bytes at(uint32_t frame) const;

private:
    std::map<uint32_t, Bytes> mFrom;  // first frame with this status
};

}  // namespace demo
