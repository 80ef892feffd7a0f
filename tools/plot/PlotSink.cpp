#include "tools/plot/PlotSink.h"

#include <cstdio>

#include "records/frameData.h"
#include "tools/plot/plotScript.h"
#include "tools/plot/runGnuplot.h"

namespace vdrdump {

void PlotSink::add(const Record& record) {
    const auto frame = record.read<uint32_t>(offsetof(Layout, frameNumber));
    if (record.session != mWanted || frame == zk::kNoFrameNumber) {
        return;
    }
    mCurves.add(record);
    if (record.known > offsetof(Layout, videoAction)) {
        mVideos.add(frame, record.bytes[offsetof(Layout, videoAction)]);
    }
}

void PlotSink::endSession(const SessionSummary& session) {
    mSessions = session.number;
    if (session.number == mWanted) {
        mSession = session;
    }
}

bool PlotSink::finish() {
    if (mCurves.isEmpty()) {
        std::fprintf(stderr, "vdrdump: %s: expected records of session %u to plot, found none\n",
                     mFile.path.c_str(), mWanted);
        return false;
    }
    if (mSessions > 1) {
        std::fprintf(stderr, "vdrdump: %s: plotted session %u of %u (--session)\n",
                     mFile.path.c_str(), mWanted, mSessions);
    }
    return runGnuplot(plotScript(mPath, mFile, mSession, mVideos, mCurves), mPath);
}

}  // namespace vdrdump
