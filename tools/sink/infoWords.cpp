#include "tools/sink/infoWords.h"

#include "records/frameData.h"

namespace vdrdump {
namespace {

constexpr size_t kListed = 16;  // the rest is only counted

const char* unitWords(double ticksPerSecond) {
    return ticksPerSecond < 1e4   ? "milliseconds"
           : ticksPerSecond < 1e7 ? "microseconds"
                                  : "nanoseconds";
}

}  // namespace

std::string kindWords(const DumpFile& file) {
    const std::string lost =
            file.lostFrame ? ", lost frame " + std::to_string(*file.lostFrame) : "";
    switch (file.kind) {
        case DumpKind::Binary:
            return "binary dump, " + std::to_string(zk::kFrameRecordSize) + " bytes per record" +
                   lost;
        case DumpKind::Text:
            return "frame-loss text" + lost;
        default:
            return "empty, no record was written" + lost;
    }
}

std::string frameWords(const FrameRange& frames) {
    const std::string first = std::to_string(frames.first);
    return frames.first == frames.last ? first : first + "-" + std::to_string(frames.last);
}

std::string missingWords(const SessionSummary& session) {
    std::string text = std::to_string(session.missing);
    uint64_t covered = 0;
    const char* separator = ": ";
    for (size_t i = 0; i < session.gaps.size() && i < kListed; ++i) {
        const FrameRange& gap = session.gaps[i];
        text += separator + frameWords(gap);
        covered += uint64_t{gap.last} - gap.first + 1;
        separator = ", ";
    }
    return covered < session.missing
                   ? text + ", and " + std::to_string(session.missing - covered) + " more"
                   : text;
}

std::string videoWords(const VideoWindow& window) {
    return (window.startSeen ? "frames " + std::to_string(window.first)
                             : std::string("start not seen")) +
           (window.endSeen ? " to " + std::to_string(window.last) : ", end not seen");
}

std::string clockWords(const FrameClock& clock) {
    const auto ticks = clock.ticksPerSecond();
    if (!ticks) {
        return "not known";
    }
    char text[128];
    std::snprintf(text, sizeof(text), "%.2f s, %.2f frames a second (cslInfo_stamp taken for %s)",
                  clock.seconds(), clock.framesPerSecond(), unitWords(*ticks));
    return text;
}

std::string lossWords(const Loss& loss) {
    if (loss.source == Loss::Source::Gap) {
        const bool isOne = loss.missing->first == loss.missing->last;
        return std::string(isOne ? "frame " : "frames ") + frameWords(*loss.missing) +
               " without a record";
    }
    const std::string frame = "frame " + std::to_string(loss.frame) + " announced, ";
    if (!loss.missing) {
        return frame + "has a record";
    }
    const bool isOne = loss.missing->first == loss.missing->last;
    return frame + "has no record" + (isOne ? "" : ", as all of " + frameWords(*loss.missing));
}

}  // namespace vdrdump
