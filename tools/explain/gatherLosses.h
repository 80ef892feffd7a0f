#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/explain/LossCases.h"
#include "tools/explain/SegmentCollector.h"

namespace vdrdump {

struct LossRequest {
    std::vector<std::string> files;    // "-": standard input
    std::optional<uint32_t> lost;      // this loss only, whether the files tell of it or not
    std::string log;                   // a logcat that announces losses, or none
    std::optional<FrameRange> frames;  // these, and not those around losses
    uint32_t session = 0;              // of each file; 0: all
    bool explains = false;             // with `frames`: losses in them, and what is around those
};

struct GatheredLosses {
    LossCases found;
    uint64_t records = 0;  // that were read
    bool isWhole = true;   // nothing was damaged or could not be read
    bool wasFull = false;  // more records were asked for than are kept
    std::vector<ReadFile> files;

    bool isNothingRead() const { return !isWhole && records == 0; }
};

// Reads the files once, front to back, and finds the losses with the frames around them. Damage is
// told on standard error. Throws std::runtime_error for a log that cannot be read.
GatheredLosses gatherLosses(const LossRequest& request);

}  // namespace vdrdump
