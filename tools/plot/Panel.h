#pragma once

#include <string>
#include <vector>

#include "tools/record/FieldChoice.h"

namespace vdrdump {

// A curve: the value of one column over the frames.
struct Trace {
    const Column* column;
    float factor;  // makes of the dump's unit that of the picture
    std::string title;
};

// Curves that share an axis, and others that share one on the right.
struct Panel {
    std::string label;
    std::vector<Trace> traces;
    std::vector<Trace> rightTraces;
    std::string rightLabel;
};

// What a session's picture shows: what is asked about most, or a panel for each field chosen.
std::vector<Panel> panelsOf(const FieldChoice& fields);

// What of `fields` is no curve, as it is no number or many; empty where all are.
std::string fieldWithoutCurve(const FieldChoice& fields);

}  // namespace vdrdump
