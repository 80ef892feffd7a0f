#include "tools/sink/InfoSink.h"

#include <cstdio>
#include <string_view>
#include <type_traits>

#include "records/frameData.h"

namespace vdrdump {
namespace {

constexpr size_t kListed = 16;  // gaps and recordings; the rest is only counted

std::string kindText(const DumpFile& file) {
    switch (file.kind) {
        case DumpKind::Binary:
            return "binary dump, " + std::to_string(zk::kFrameRecordSize) + " bytes per record";
        case DumpKind::Text:
            return file.lostFrame ? "frame-loss text, lost frame " + std::to_string(*file.lostFrame)
                                  : "frame-loss text";
        case DumpKind::Empty:
            break;
    }
    return "empty, no record was written";
}

std::string frames(uint32_t first, uint32_t last) {
    const std::string from = std::to_string(first);
    return first == last ? from : from + "-" + std::to_string(last);
}

std::string more(uint64_t all, size_t listed) {
    return all > listed ? ", and " + std::to_string(all - listed) + " more" : "";
}

template <typename T>
std::string rangeText(const Range<T>& range, const char* unit) {
    if (range.isEmpty()) {
        return "not known";
    }
    const auto text = [](T value) {
        if constexpr (std::is_floating_point_v<T>) {
            char buffer[64];
            std::snprintf(buffer, sizeof(buffer), "%.2f", static_cast<double>(value));
            return std::string(buffer);
        } else {
            return std::to_string(value);
        }
    };
    const std::string low = text(range.low());
    const std::string high = text(range.high());
    return (low == high ? low : low + " to " + high) + unit;
}

std::string missingText(const SessionSummary& session) {
    std::string text = std::to_string(session.missing);
    uint64_t covered = 0;
    const char* separator = ": ";
    for (size_t i = 0; i < session.gaps.size() && i < kListed; ++i) {
        const FrameRange& gap = session.gaps[i];
        text += separator + frames(gap.first, gap.last);
        covered += uint64_t{gap.last} - gap.first + 1;
        separator = ", ";
    }
    return text + (covered < session.missing ? more(session.missing, covered) : "");
}

}  // namespace

void InfoSink::line(const char* name, const std::string& text) {
    char start[32];
    std::snprintf(start, sizeof(start), "  %-16s", name);
    mOutput.append(start + text + "\n");
}

void InfoSink::beginFile(const DumpFile& file) {
    mOutput.append(file.path + ": " + kindText(file) + "\n");
}

void InfoSink::endSession(const SessionSummary& session) {
    mProgress.clear();
    line(("session " + std::to_string(session.number)).c_str(),
         std::to_string(session.records) + " records, " +
                 (session.numbered == 0 ? "none with a frame number"
                                        : "frames " + std::to_string(session.first) + " to " +
                                                  std::to_string(session.last)));
    line("  missing", missingText(session));
    if (session.repeated != 0) {
        line("  repeated", std::to_string(session.repeated));
    }
    if (session.late != 0) {
        line("  late", std::to_string(session.late) + " behind a later frame");
    }
    if (session.numbered != session.records) {
        line("  no number", std::to_string(session.records - session.numbered) + " records");
    }
    videoLines();
    rangeLines();
    mStatistics = SessionStatistics();
}

void InfoSink::videoLines() {
    const VideoWindows& videos = mStatistics.videos;
    line("  recordings", std::to_string(videos.count()));
    for (size_t i = 0; i < videos.windows().size() && i < kListed; ++i) {
        const VideoWindow& window = videos.windows()[i];
        line("",
             (window.startSeen ? "frames " + std::to_string(window.first)
                               : std::string("start not seen")) +
                     (window.endSeen ? " to " + std::to_string(window.last) : ", end not seen"));
    }
    if (videos.count() > kListed) {
        line("", std::to_string(videos.count() - kListed) + " more");
    }
}

void InfoSink::rangeLines() {
    line("  zoom", rangeText(mStatistics.zoom, ""));
    line("  camera load", rangeText(mStatistics.usage, " % of all processors"));
    line("  load average", rangeText(mStatistics.load, " (1 minute)"));
    line("  temperature", "front " + rangeText(mStatistics.frontTemp, "") + ", back " +
                                  rangeText(mStatistics.backTemp, "") + ", frame " +
                                  rangeText(mStatistics.frameTemp, "") +
                                  " (as the driver states it)");
    line("  memory", "free " + rangeText(mStatistics.memFree, " kB") + ", available " +
                             rangeText(mStatistics.memAvailable, " kB") + ", captures " +
                             rangeText(mStatistics.usedMem, ""));
}

void InfoSink::damageLine(const char* name, uint64_t count) {
    if (count != 0) {
        line(name, std::to_string(count));
    }
}

void InfoSink::endFile(uint64_t records, const DamageLog& damage) {
    line("records", std::to_string(records));
    damageLine("cut record", damage.count(Damage::CutRecord));
    damageLine("bad counts", damage.count(Damage::CountTooLarge));
    damageLine("cut lines", damage.count(Damage::CutLine));
    damageLine("bad lines", damage.count(Damage::BadLine));
    line("damage", damage.any() ? "yes, listed on standard error" : "none");
    mProgress.clear();
    mOutput.flush();
}

}  // namespace vdrdump
