#pragma once

#include <vector>

#include "tools/explain/Findings.h"
#include "tools/explain/LossCases.h"

namespace vdrdump {

struct Explanation {
    LossCase loss;
    Findings findings;
};

struct Explanations {
    std::vector<Explanation> losses;
    size_t unexplained = 0;  // losses beyond those
    uint64_t unlisted = 0;   // frames without a record in gaps beyond those
    bool wasFull = false;    // more records are near losses than are kept
};

}  // namespace vdrdump
