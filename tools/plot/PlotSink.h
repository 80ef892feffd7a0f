#pragma once

#include <optional>
#include <string>

#include "tools/explain/LossCases.h"
#include "tools/explain/SegmentCollector.h"
#include "tools/names/NodeNames.h"
#include "tools/plot/drawSession.h"
#include "tools/session/Selection.h"

namespace vdrdump {

// Draws one camera session of a dump, the first with frames that were chosen, and says above it why
// the frame was lost that the dump or the user names. It wants all records: a recording that goes
// on in the chosen frames may start and end outside, and so may what explains the loss.
class PlotSink : public RecordSink {
public:
    // Draws to `path`, which ends in .svg or .png.
    PlotSink(const std::string& path, const Selection& selection, const FieldChoice& fields,
             NodeNames names)
          : mPath(path), mSelection(selection), mFields(fields), mNames(std::move(names)) {}

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd& end) override;
    bool finish() override;
    bool isDone() const override { return false; }

private:
    std::optional<LossCase> findLoss() const;
    Picture picture() const;

    const std::string mPath;
    const Selection mSelection;
    const FieldChoice mFields;
    const NodeNames mNames;
    DumpFile mFile;
    std::optional<SessionCurves> mCurves;  // of the session that is read, and then of the one drawn
    std::optional<SegmentCollector> mAroundLoss;  // where a loss is known
    uint32_t mDrawn = 0;  // number of the session, 0 while none has any frame
    SessionSummary mSession;
    uint32_t mSessions = 0;
};

}  // namespace vdrdump
