#pragma once

#include "tools/record/Record.h"

namespace vdrdump {

// Finds the records of one dump, front to back. Whatever the bytes: every record that can be
// read is given, and what is wrong goes to the damage log.
class DumpReader {
public:
    virtual ~DumpReader() = default;
    // False at the end. `record` is valid until the next call.
    virtual bool next(Record& record) = 0;
};

}  // namespace vdrdump
