#include "tools/session/LossFinder.h"

namespace vdrdump {

void LossFinder::endSession(const SessionSummary& session) {
    for (const FrameRange& gap : session.gaps) {
        const Loss loss{Loss::Source::Gap, gap.first, session.number, gap};
        if (mAnnounced && !mAnnouncedIn && !mAnnouncedGap && *mAnnounced >= gap.first &&
            *mAnnounced <= gap.last) {
            mAnnouncedGap = loss;
            continue;
        }
        ++mGapCount;
        if (mGaps.size() < kMost) {
            mGaps.push_back(loss);
        }
    }
}

std::vector<Loss> LossFinder::losses() const {
    std::vector<Loss> losses;
    if (mAnnounced) {
        Loss loss{Loss::Source::Announced, *mAnnounced, 0, FrameRange{*mAnnounced, *mAnnounced}};
        if (mAnnouncedIn) {
            loss.session = *mAnnouncedIn;
            loss.missing.reset();
        } else if (mAnnouncedGap) {
            loss.session = mAnnouncedGap->session;
            loss.missing = mAnnouncedGap->missing;
        }
        losses.push_back(loss);
    }
    losses.insert(losses.end(), mGaps.begin(), mGaps.end());
    return losses;
}

}  // namespace vdrdump
