#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/record/Record.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

// Frames that were lost, as one dump tells of them.
struct Loss {
    enum class Source : uint8_t {
        Announced,  // by the name of a frame-loss text, or by the user
        Gap,        // frames without a record
    };

    Source source = Source::Gap;
    uint32_t frame = 0;    // the announced one, or the first of the gap
    uint32_t session = 0;  // 0: not known
    // Without a record; none where the lost frame was completed all the same.
    std::optional<FrameRange> missing;
};

// Gathers the losses of one file: the announced one and, as frames between two records must have
// been lost too, the gaps. Announcements close together share a frame-loss text, so that one tells
// of several. Memory is bounded.
class LossFinder {
public:
    static constexpr size_t kMost = 1024;

    explicit LossFinder(std::optional<uint32_t> announced) : mAnnounced(announced) {}

    void add(const Record& record) {
        if (mAnnounced && !mAnnouncedIn && record.isNumbered() && record.frame() == *mAnnounced) {
            mAnnouncedIn = record.session;
        }
    }
    void endSession(const SessionSummary& session);

    // Losses beyond those listed are only counted. The announced one comes first.
    std::vector<Loss> losses() const;
    uint64_t count() const { return mGapCount + (mAnnounced ? 1 : 0); }
    std::optional<uint32_t> announced() const { return mAnnounced; }
    bool hasAnnouncedRecord() const { return mAnnouncedIn.has_value(); }

private:
    const std::optional<uint32_t> mAnnounced;
    std::optional<uint32_t> mAnnouncedIn;  // session of its record
    std::optional<Loss> mAnnouncedGap;     // the gap that it lies in
    std::vector<Loss> mGaps;
    uint64_t mGapCount = 0;
};

}  // namespace vdrdump
