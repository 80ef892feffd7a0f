#pragma once

#include <string>

#include "tools/output/Output.h"
#include "tools/output/Progress.h"
#include "tools/session/SessionStatistics.h"
#include "tools/sink/InfoTotals.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Says in words what each dump holds: what it is, its camera sessions with their frames, recordings
// and ranges, its losses, and what is wrong with it; of several, what they hold together.
class InfoSink : public RecordSink {
public:
    // `progress` must outlive this; its line is taken away before anything is printed.
    explicit InfoSink(Progress& progress) : mProgress(progress), mOutput("-") {}

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override { mStatistics.add(record); }
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd& end) override;
    bool finish() override;
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    void line(const std::string& name, const std::string& text);
    void countLine(const char* name, uint64_t count, const char* words = "");
    void rangeLines();
    void videoLines();
    void lossLines(const LossFinder& losses);
    void damageLines(const DamageLog& damage);
    void totalLines();

    Progress& mProgress;
    Output mOutput;
    DumpFile mFile;
    uint64_t mSessions = 0;  // of the file
    SessionStatistics mStatistics;
    InfoTotals mTotals;
};

}  // namespace vdrdump
