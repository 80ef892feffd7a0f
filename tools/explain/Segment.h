#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/explain/FrameMap.h"
#include "tools/read/DumpKind.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

// What one file holds of one camera session, as far as it lies near a loss.
struct Segment {
    std::string path;
    std::string time;  // from the file's name, may be empty
    DumpKind kind = DumpKind::Empty;
    uint32_t file = 0;
    uint32_t session = 0;
    std::optional<uint32_t> announced;  // by the file's name
    FrameMap frames;
    std::vector<FrameRange> gaps;  // of binary dumps
    uint64_t missing = 0;          // frames in all gaps, listed or not
    bool isDamaged = false;        // the file is, somewhere
};

}  // namespace vdrdump
