#pragma once

#include <string>

#include "tools/names/NodeNames.h"
#include "tools/output/Output.h"
#include "tools/record/FieldChoice.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Puts records into words: every field by its name, with its unit where one is known, and of an
// array the elements in use. Nodes that have a name are called by it, too.
class ShowSink : public RecordSink {
public:
    explicit ShowSink(const FieldChoice& fields, NodeNames names = NodeNames())
          : mFields(fields), mNames(std::move(names)), mOutput("-") {}

    void beginFile(const DumpFile& file) override { mPath = file.path; }
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(const DumpEnd& end) override { mHadRecords = end.records != 0; }
    bool finish() override;
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    const FieldChoice mFields;
    const NodeNames mNames;
    Output mOutput;
    std::string mPath;
    bool mHadRecords = false;
    uint64_t mFound = 0;
};

// Says that nothing was found among the records of `path`, of which there were some.
void reportNothingFound(const std::string& path);

}  // namespace vdrdump
