#pragma once

#include <map>

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// Everything about the frames that has a value per frame, and how a frame's value stands beside
// those of a window.
class Measurements {
public:
    using Series = std::map<uint32_t, double>;  // by frame

    Measurements(const FrameMap& frames, const StampClocks& clocks);

    const std::map<Subject, Series>& all() const { return mSeries; }
    // Null where nothing is known of it.
    const Series* find(const Subject& subject) const;

    // None where the frame has no value.
    static std::optional<Comparison> compare(const Subject& subject, const Series& series,
                                             uint32_t frame, const FrameRange& window);
    // Of the highest value of the window; none where it has none.
    static std::optional<Comparison> compareHighest(const Subject& subject, const Series& series,
                                                    const FrameRange& window);

private:
    void add(const Subject& subject, uint32_t frame, double value);

    std::map<Subject, Series> mSeries;
};

}  // namespace vdrdump
