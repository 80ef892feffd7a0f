#pragma once

#include <string>
#include <vector>

#include "tools/record/FieldChoice.h"
#include "tools/record/Record.h"

namespace vdrdump {

// A single value of a record that somebody chose: a column of the record, or one of an array's
// element.
struct ChosenValue {
    std::string name;  // "zoomRatio", "nodeInfo[3].stamps_2"
    const Column* column = nullptr;
    const ArrayField* array = nullptr;  // null: a column of the record
    size_t element = 0;                 // of the array

    // Null where the value was not read, or the array has no such element.
    const uint8_t* in(const Record& record) const;
};

// What is wanted beside the frame number, in layout order.
std::vector<ChosenValue> chosenValues(const FieldChoice& fields);

// An array that is wanted in all its elements and thus no single value; empty where none is.
std::string arrayAsAWhole(const FieldChoice& fields);

}  // namespace vdrdump
