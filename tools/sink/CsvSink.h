#pragma once

#include <string>

#include "tools/output/Output.h"
#include "tools/record/FieldChoice.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Writes one row per frame below a header of stable names. An array is one cell of JSON, its
// elements arrays of their columns; a cell is empty where the dump gave no value, and "" where a
// name is empty.
class CsvSink : public RecordSink {
public:
    CsvSink(const std::string& path, const FieldChoice& fields);

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(const DumpEnd&) override {}
    bool finish() override { return mOutput.finish(); }
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    void writeHeader();

    const FieldChoice mFields;
    Output mOutput;
    std::string mRowStart;  // the cells that are the same in all rows of a file
};

}  // namespace vdrdump
