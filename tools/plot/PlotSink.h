#pragma once

#include <string>
#include <vector>

#include "tools/plot/PlotCurves.h"
#include "tools/session/Selection.h"
#include "tools/session/VideoWindows.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Draws one camera session of a dump, the first with frames that were chosen: its curves over the
// frames, with the missing frames, the video recordings and the lost frame marked. It wants all
// records: a recording that goes on in the chosen frames may start and end outside.
class PlotSink : public RecordSink {
public:
    // Draws to `path`, which ends in .svg or .png.
    PlotSink(const std::string& path, const Selection& selection, const FieldChoice& fields)
          : mPath(path), mSelection(selection), mPanels(panelsOf(fields)), mCurves(mPanels) {}

    void beginFile(const DumpFile& file) override { mFile = file; }
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd&) override {}
    bool finish() override;
    bool isDone() const override { return false; }

private:
    const std::string mPath;
    const Selection mSelection;
    const std::vector<Panel> mPanels;
    DumpFile mFile;
    PlotCurves mCurves;
    VideoWindows mVideos;  // of the session that is read, and then of the one that is drawn
    uint32_t mDrawn = 0;   // number of the session, 0 while none has any frame
    SessionSummary mSession;
    uint32_t mSessions = 0;
};

}  // namespace vdrdump
