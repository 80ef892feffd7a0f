#pragma once

#include "demo/Findings.h"
#include "records/frameData.h"

namespace demo {

struct RecordCompare {
    // Takes down the first byte, and the field it is in, where the record at `found`, 4096 bytes,
    // is not what it must be. `where` begins the sentence.
    static void expectSame(const void* found, const zk::frameData& expected, const char* where,
                           Findings& findings);
};

}  // namespace demo
