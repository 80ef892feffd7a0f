#pragma once

#include <string>

#include "tools/output/Progress.h"
#include "tools/read/ByteSource.h"
#include "tools/read/DumpReader.h"
#include "tools/session/Selection.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Leads the chosen records of files, one file after the other, to a sink. Memory does not grow with
// the length or the number of the files.
class DumpPass {
public:
    // Damage is described on `errors` unless that is null. All three must outlive this.
    DumpPass(RecordSink& sink, Progress& progress, std::FILE* errors)
          : mSink(sink), mProgress(progress), mErrors(errors) {}

    void choose(const Selection& selection) { mSelection = selection; }

    // False when anything in the file was damaged or could not be read.
    bool readFile(const std::string& path);
    bool readSource(const std::string& path, ByteSource& source);

private:
    uint64_t readRecords(DumpReader& reader, LossFinder& losses, DamageLog& damage);
    void endSession(const SessionTracker& sessions, LossFinder& losses);

    RecordSink& mSink;
    Progress& mProgress;
    std::FILE* const mErrors;
    Selection mSelection;
    uint32_t mFiles = 0;
};

}  // namespace vdrdump
