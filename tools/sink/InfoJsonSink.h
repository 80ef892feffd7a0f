#pragma once

#include <json/json.h>

#include <string>

#include "tools/output/Output.h"
#include "tools/session/SessionStatistics.h"
#include "tools/sink/InfoTotals.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// What InfoSink says, as one JSON object: `files`, an object each, and `total`. What is not known
// is null.
class InfoJsonSink : public RecordSink {
public:
    InfoJsonSink();

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override { mStatistics.add(record); }
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd& end) override;
    bool finish() override;
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    std::string textOf(const Json::Value& value) const;

    Output mOutput;
    Json::StreamWriterBuilder mBuilder;
    DumpFile mFile;
    Json::Value mSessions;  // of the file
    SessionStatistics mStatistics;
    InfoTotals mTotals;
};

}  // namespace vdrdump
