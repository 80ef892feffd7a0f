#pragma once

#include <map>
#include <optional>
#include <vector>

#include "tools/explain/FrameMap.h"
#include "tools/explain/FrameMeasurer.h"
#include "tools/plot/Panel.h"
#include "tools/plot/PlotCurves.h"
#include "tools/session/VideoWindows.h"

namespace vdrdump {

// What a picture of one camera session may show: columns of its records and, unless fields were
// chosen, what its frames took. Records come in the order of their dump; as they may be late, the
// latest are held and handed on in the order of their frame numbers. Memory is bounded however long
// the session is.
class SessionCurves {
public:
    // `ticksPerSecond` as in clocksOf.
    SessionCurves(const FieldChoice& fields, std::optional<double> ticksPerSecond)
          : mMeasures(fields.isAll()),
            mTicksPerSecond(ticksPerSecond),
            mColumnPanels(columnPanels(fields)) {}

    void add(const Record& record);
    // A record that is not drawn: a recording that goes on in those drawn may start or end in it.
    void passBy(const Record& record);
    // No record follows.
    void finish();

    bool isEmpty() const { return mHeld.empty() && mCurves.isEmpty(); }

    // Once it is finished.
    const PlotCurves& curves() const { return mCurves; }
    const std::vector<Panel>& panelsOfColumns() const { return mColumnPanels; }
    bool measures() const { return mMeasures; }
    // Curves of what the frames took.
    const std::map<Subject, size_t>& measured() const { return mMeasured; }
    // Nodes that began with a frame and did not end it, a mark at each; some never tell their end.
    const std::map<NodeIds, size_t>& unended() const { return mUnended; }
    const StampClocks& clocks() const { return mClocks; }
    const std::vector<VideoWindow>& videos() const { return mVideos.windows(); }

private:
    static constexpr size_t kHeld = 1024;  // frames, 4 MB; clocks are told from the first ones

    void begin();
    void handOnFirst();
    template <typename Key>
    void addTo(std::map<Key, size_t>& curves, const Key& key, double value);

    const bool mMeasures;
    const std::optional<double> mTicksPerSecond;
    const std::vector<Panel> mColumnPanels;
    FrameMap mHeld;
    StampClocks mClocks;
    std::optional<FrameMeasurer> mMeasurer;
    size_t mFirstMeasured = 0;  // number of a curve
    std::map<Subject, size_t> mMeasured;
    std::map<NodeIds, size_t> mUnended;
    std::vector<PlotCurves::Value> mValues;  // of the frame that is handed on
    PlotCurves mCurves;
    VideoWindows mVideos;
};

}  // namespace vdrdump
