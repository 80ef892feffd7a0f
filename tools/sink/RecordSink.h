#pragma once

#include <optional>
#include <string>

#include "tools/read/DamageLog.h"
#include "tools/read/DumpKind.h"
#include "tools/record/Record.h"
#include "tools/session/LossFinder.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

struct DumpFile {
    std::string path;  // as it is shown
    DumpKind kind = DumpKind::Empty;
    std::optional<uint32_t> lostFrame;  // from the name of a frame-loss text, or from the user
    std::string time;                   // from the name, empty where it has none
    uint32_t number = 0;                // among the files of this run, from 1
};

// What is known of a file once it was read.
struct DumpEnd {
    uint64_t records;  // all, chosen or not
    const DamageLog& damage;
    const LossFinder& losses;
};

// What is done with the records of one or more files. The calls come in this order:
//
//   ( beginFile ( add... endSession )... endFile )... finish
//
// Of the records only the chosen ones come, of the sessions those that may have some.
class RecordSink {
public:
    virtual ~RecordSink() = default;
    virtual void beginFile(const DumpFile& file) = 0;
    virtual void add(const Record& record) = 0;
    virtual void endSession(const SessionSummary& session) = 0;
    virtual void endFile(const DumpEnd& end) = 0;
    // Completes the output. False when it could not be given; why has been said.
    virtual bool finish() = 0;
    // Whether reading on is of no use.
    virtual bool isDone() const = 0;
};

}  // namespace vdrdump
