#pragma once

#include <json/json.h>

#include <memory>
#include <sstream>

#include "tools/output/Output.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Writes one JSON object per frame and line. An array stays one, its elements objects; an integer
// that a double would not hold exactly is a string; what the dump did not give is null.
class NdjsonSink : public RecordSink {
public:
    explicit NdjsonSink(const std::string& path);

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary&) override {}
    void endFile(uint64_t, const DamageLog&) override {}
    bool finish() override { return mOutput.flush(); }
    bool isDone() const override { return mOutput.hasFailed(); }

private:
    Output mOutput;
    std::unique_ptr<Json::StreamWriter> mWriter;
    std::ostringstream mText;
    Json::Value mFile;
    Json::Value mLostFrame;
};

}  // namespace vdrdump
