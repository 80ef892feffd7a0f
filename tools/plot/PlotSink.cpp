#include "tools/plot/PlotSink.h"

#include <algorithm>
#include <cstdio>

#include "tools/plot/plotScript.h"
#include "tools/plot/runGnuplot.h"

namespace vdrdump {
namespace {

uint64_t missingIn(const SessionSummary& session, const FrameRange& frames) {
    if (frames.first == session.first && frames.last == session.last) {
        return session.missing;  // not all gaps need be listed
    }
    uint64_t missing = 0;
    for (const FrameRange& gap : session.gaps) {
        const uint64_t first = std::max(gap.first, frames.first);
        const uint64_t end = uint64_t{std::min(gap.last, frames.last)} + 1;
        missing += end > first ? end - first : 0;
    }
    return missing;
}

}  // namespace

void PlotSink::add(const Record& record) {
    if (!record.isNumbered() || (mDrawn != 0 && record.session != mDrawn)) {
        return;
    }
    if (record.known > offsetof(Layout, videoAction)) {
        mVideos.add(record.frame(), record.bytes[offsetof(Layout, videoAction)]);
    }
    if (mSelection.wants(record)) {
        mDrawn = record.session;
        mCurves.add(record);
    }
}

void PlotSink::endSession(const SessionSummary& session) {
    mSessions = session.number;
    if (session.number == mDrawn) {
        mSession = session;
    } else if (mDrawn == 0) {
        mVideos = VideoWindows();
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
                    std::to_string(missingIn(mSession, frames)) + " missing";
    return runGnuplot(plotScript(picture, mPanels, mCurves), mPath);
}

}  // namespace vdrdump
