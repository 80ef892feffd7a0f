#pragma once

#include <optional>
#include <string>

#include "tools/read/DamageLog.h"
#include "tools/read/DumpKind.h"
#include "tools/record/Record.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

struct DumpFile {
    std::string path;
    DumpKind kind = DumpKind::Empty;
    std::optional<uint32_t> lostFrame;  // of a frame-loss text file, from its name
    uint32_t number = 0;                // among the files of this run, from 1
};

// What is done with the records of one or more files. The calls come in this order:
//
//   ( beginFile ( add... endSession )... endFile )... finish
class RecordSink {
public:
    virtual ~RecordSink() = default;
    virtual void beginFile(const DumpFile& file) = 0;
    virtual void add(const Record& record) = 0;
    virtual void endSession(const SessionSummary& session) = 0;
    virtual void endFile(uint64_t records, const DamageLog& damage) = 0;
    // Completes the output. False when it could not be given; why has been said.
    virtual bool finish() = 0;
    // Whether reading on is of no use.
    virtual bool isDone() const = 0;
};

}  // namespace vdrdump
