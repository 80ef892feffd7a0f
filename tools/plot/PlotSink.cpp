#include "tools/plot/PlotSink.h"

#include <algorithm>
#include <cstdio>

#include "tools/explain/Phrases.h"
#include "tools/explain/analyseLoss.h"
#include "tools/output/Output.h"

namespace vdrdump {
namespace {

PictureFormat formatOf(const std::string& path) {
    const bool isPng = path.size() >= 4 && path.compare(path.size() - 4, 4, ".png") == 0;
    return isPng ? PictureFormat::Png : PictureFormat::Svg;
}

std::string answerOf(const LossCase& loss, const NodeNames& names) {
    const Findings findings = analyseLoss(loss.lost, loss.history->frames, names.ticksPerSecond());
    const Phrases phrases(findings, names);
    return "Lost " + phrases.lost() + ": " + phrases.cause() + ".";
}

}  // namespace

void PlotSink::beginFile(const DumpFile& file) {
    mFile = file;
    mCurves.emplace(mFields, mNames.ticksPerSecond());
    if (file.lostFrame) {
        mAroundLoss.emplace(SegmentCollector::around(std::vector<uint32_t>{*file.lostFrame}),
                            std::nullopt);
        mAroundLoss->beginFile(file);
    }
}

void PlotSink::add(const Record& record) {
    if (mAroundLoss) {
        mAroundLoss->add(record);
    }
    if (mDrawn != 0 && record.session != mDrawn) {
        return;
    }
    if (record.isNumbered() && mSelection.wants(record)) {
        mDrawn = record.session;
        mCurves->add(record);
    } else {
        mCurves->passBy(record);
    }
}

void PlotSink::endSession(const SessionSummary& session) {
    if (mAroundLoss) {
        mAroundLoss->endSession(session);
    }
    mSessions = session.number;
    if (session.number == mDrawn) {
        mSession = session;
    } else if (mDrawn == 0) {
        mCurves.emplace(mFields, mNames.ticksPerSecond());
    }
}

void PlotSink::endFile(const DumpEnd& end) {
    if (mAroundLoss) {
        mAroundLoss->endFile(end);
    }
}

// In the session that is drawn or, where no record is near it, in none.
std::optional<LossCase> PlotSink::findLoss() const {
    const LossCases found = makeLossCases(mAroundLoss->segments(), {}, mFile.lostFrame);
    const LossCase* elsewhere = nullptr;
    for (const LossCase& each : found.cases) {
        const uint32_t session = each.history->session;
        if (session == mDrawn) {
            return each;
        }
        elsewhere = session != 0 ? &each : elsewhere;
    }
    return elsewhere == nullptr && !found.cases.empty() ? std::optional(found.cases.front())
                                                        : std::nullopt;
}

Picture PlotSink::picture() const {
    Picture picture;
    const FrameRange wanted = mSelection.range();
    picture.frames = {std::max(mSession.first, wanted.first), std::min(mSession.last, wanted.last)};
    if (const auto loss = mAroundLoss ? findLoss() : std::nullopt) {
        picture.lost.push_back(loss->lost);
        picture.answer = answerOf(*loss, mNames);
    }
    const uint64_t count = uint64_t{picture.frames.last} - picture.frames.first + 1;
    const uint64_t missing = count - std::min(count, mCurves->curves().records());
    picture.title = mFile.path.substr(mFile.path.rfind('/') + 1) + ", session " +
                    std::to_string(mDrawn) + ": frames " + std::to_string(picture.frames.first) +
                    " to " + std::to_string(picture.frames.last) + ", " + std::to_string(missing) +
                    " missing";
    return picture;
}

bool PlotSink::finish() {
    if (!mCurves || mCurves->isEmpty()) {
        std::fprintf(stderr, "vdrdump: %s: expected records of the frames to plot, found none\n",
                     mFile.path.c_str());
        return false;
    }
    mCurves->finish();
    if (mSessions > 1 && mSelection.session == 0) {
        std::fprintf(stderr, "vdrdump: %s: plotted session %u of %u (--session)\n",
                     mFile.path.c_str(), mDrawn, mSessions);
    }
    const auto drawn = drawSession(picture(), *mCurves, mNames, formatOf(mPath), mPath);
    if (!drawn) {
        return false;
    }
    Output output(mPath);
    output.append(*drawn);
    return output.finish();
}

}  // namespace vdrdump
