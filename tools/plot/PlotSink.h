#pragma once

#include <string>

#include "tools/plot/PlotCurves.h"
#include "tools/session/VideoWindows.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Draws one camera session of a dump: its curves over the frames, with the missing frames and the
// video recordings marked.
class PlotSink : public RecordSink {
public:
    // Draws session `session` to `path`, which ends in .svg or .png.
    PlotSink(const std::string& path, uint32_t session) : mPath(path), mWanted(session) {}

    void beginFile(const DumpFile& file) override { mFile = file; }
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(uint64_t, const DamageLog&) override {}
    bool finish() override;
    bool isDone() const override { return false; }

private:
    const std::string mPath;
    const uint32_t mWanted;
    DumpFile mFile;
    PlotCurves mCurves;
    VideoWindows mVideos;
    SessionSummary mSession;
    uint32_t mSessions = 0;
};

}  // namespace vdrdump
