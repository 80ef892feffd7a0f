#pragma once

#include <string>

#include "tools/output/Output.h"
#include "tools/output/Progress.h"
#include "tools/session/SessionStatistics.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Says in words what a dump holds: what it is, its camera sessions with their frames, recordings
// and ranges, and what is wrong with it.
class InfoSink : public RecordSink {
public:
    // `progress` must outlive this; its line is taken away before anything is printed.
    explicit InfoSink(Progress& progress) : mProgress(progress), mOutput("-") {}

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override { mStatistics.add(record); }
    void endSession(const SessionSummary& session) override;
    void endFile(uint64_t records, const DamageLog& damage) override;
    bool finish() override { return mOutput.flush(); }
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    void line(const char* name, const std::string& text);
    void rangeLines();
    void videoLines();
    void damageLine(const char* name, uint64_t count);

    Progress& mProgress;
    Output mOutput;
    SessionStatistics mStatistics;
};

}  // namespace vdrdump
