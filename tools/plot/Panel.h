#pragma once

#include <string>
#include <vector>

#include "tools/record/ChosenValue.h"

namespace vdrdump {

// One of the curves of a session.
struct Curve {
    std::string title;
    size_t number = 0;        // among those of the session
    ChosenValue source = {};  // without a column: what frames took
    double factor = 1;        // makes of the dump's unit that of the axis
    bool isMark = false;      // crosses, whose height tells nothing
};

struct Axis {
    std::string label;  // with the unit
    std::vector<Curve> curves;
};

// Curves over the frames with an axis on the left and, where the second has any, one on the right.
struct Panel {
    enum class Kind : uint8_t {
        EveryFrame,  // a value of its own in each
        Sampled,     // once a second, so that it goes in steps
        Mode,        // numbers that stand for something, of interest where they change
    };
    Kind kind = Kind::EveryFrame;
    Axis left;
    Axis right;

    bool isStepped() const { return kind != Kind::EveryFrame; }
};

// Panels of columns, their curves numbered from 0: the state of the device or, where fields were
// chosen, one for each of these.
std::vector<Panel> columnPanels(const FieldChoice& fields);

// What of `fields` is no curve, as it is no number or many; empty where all are.
std::string fieldWithoutCurve(const FieldChoice& fields);

}  // namespace vdrdump
