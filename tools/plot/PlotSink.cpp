#include "tools/plot/PlotSink.h"

#include <algorithm>
#include <cstdio>

#include "tools/plot/plotScript.h"
#include "tools/plot/runGnuplot.h"

namespace vdrdump {

void PlotSink::add(const Record& record) {
    if (!record.isNumbered() || (mDrawn != 0 && record.session != mDrawn)) {
        return;
    }
    mDrawn = record.session;
    mCurves.add(record);
    if (record.known > offsetof(Layout, videoAction)) {
        mVideos.add(record.frame(), record.bytes[offsetof(Layout, videoAction)]);
    }
}

void PlotSink::endSession(const SessionSummary& session) {
    mSessions = session.number;
    if (session.number == mDrawn) {
        mSession = session;
    }
}

bool PlotSink::finish() {
    if (mCurves.isEmpty()) {
        std::fprintf(stderr, "vdrdump: %s: expected records of the frames to plot, found none\n",
                     mFile.path.c_str());
        return false;
    }
    if (mSessions > 1 && mSelection.session == 0) {
        std::fprintf(stderr, "vdrdump: %s: plotted session %u of %u (--session)\n",
                     mFile.path.c_str(), mDrawn, mSessions);
    }
    const FrameRange wanted = mSelection.range();
    const FrameRange frames{std::max(mSession.first, wanted.first),
                            std::min(mSession.last, wanted.last)};
    Picture picture{mPath, "", frames, mSession.gaps, mVideos.windows(), mFile.lostFrame};
    picture.title = mFile.path + ", session " + std::to_string(mDrawn) + ": frames " +
                    std::to_string(frames.first) + " to " + std::to_string(frames.last) + ", " +
                    std::to_string(mSession.missing) + " missing";
    return runGnuplot(plotScript(picture, mPanels, mCurves), mPath);
}

}  // namespace vdrdump
