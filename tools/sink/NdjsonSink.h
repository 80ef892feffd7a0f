#pragma once

#include <string>

#include "tools/output/Output.h"
#include "tools/record/FieldChoice.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Writes one JSON object per frame and line, its keys in the order of the layout. An array stays
// one, its elements objects; an integer that a double would not hold exactly is a string; what the
// dump did not give is null.
class NdjsonSink : public RecordSink {
public:
    NdjsonSink(const std::string& path, const FieldChoice& fields)
          : mFields(fields), mOutput(path) {}

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(const DumpEnd&) override {}
    bool finish() override { return mOutput.finish(); }
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    const FieldChoice mFields;
    Output mOutput;
    std::string mRowStart;  // the values that are the same in all rows of a file
};

}  // namespace vdrdump
