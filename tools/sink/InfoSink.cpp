#include "tools/sink/InfoSink.h"

#include <cstdio>

#include "tools/sink/infoWords.h"

namespace vdrdump {
namespace {

constexpr size_t kListed = 16;  // recordings and losses of a file; the rest is only counted

}  // namespace

void InfoSink::line(const std::string& name, const std::string& text) {
    char start[64];
    std::snprintf(start, sizeof(start), "  %-16s", name.c_str());
    mOutput.append(start + text + "\n");
}

void InfoSink::countLine(const char* name, uint64_t count, const char* words) {
    if (count != 0) {
        line(name, std::to_string(count) + words);
    }
}

// What is no dump gets its one line on standard error.
void InfoSink::beginFile(const DumpFile& file) {
    mFile = file;
    mSessions = 0;
    if (file.kind == DumpKind::None) {
        return;
    }
    mProgress.clear();
    mOutput.append(file.path + ": " + kindWords(file) + "\n");
    if (!file.time.empty()) {
        line(file.lostFrame && file.kind != DumpKind::Binary ? "announced" : "opened", file.time);
    }
}

void InfoSink::endSession(const SessionSummary& session) {
    ++mSessions;
    mProgress.clear();
    line("session " + std::to_string(session.number),
         std::to_string(session.records) + " records, " +
                 (session.numbered == 0 ? "none with a frame number"
                                        : "frames " + std::to_string(session.first) + " to " +
                                                  std::to_string(session.last)));
    line("  missing", missingWords(session));
    countLine("  repeated", session.repeated);
    countLine("  late", session.late, " behind a later frame");
    countLine("  no number", session.records - session.numbered - session.misnumbered, " records");
    line("  duration", clockWords(mStatistics.clock));
    videoLines();
    rangeLines();
    mStatistics = SessionStatistics();
}

// Frames in the middle of a recording have no mark, and those outside have none either.
void InfoSink::videoLines() {
    const VideoWindows& videos = mStatistics.videos;
    const auto& windows = videos.windows();
    line("  recordings",
         windows.empty() ? "none starts or ends in these frames" : std::to_string(videos.count()));
    for (size_t i = 0; i < windows.size() && i < kListed; ++i) {
        line("", videoWords(windows[i]));
    }
    if (videos.count() > kListed) {
        line("", std::to_string(videos.count() - kListed) + " more");
    }
}

void InfoSink::rangeLines() {
    line("  zoom", rangeWords(mStatistics.zoom, ""));
    line("  camera load", rangeWords(mStatistics.usage, " % of all processors"));
    line("  load average", rangeWords(mStatistics.load, " (1 minute)"));
    line("  temperature", "front " + rangeWords(mStatistics.frontTemp, "") + ", back " +
                                  rangeWords(mStatistics.backTemp, "") + ", frame " +
                                  rangeWords(mStatistics.frameTemp, "") +
                                  " (as the driver states it)");
    line("  memory", "free " + rangeWords(mStatistics.memFree, " kB") + ", available " +
                             rangeWords(mStatistics.memAvailable, " kB") + ", captures " +
                             rangeWords(mStatistics.usedMem, ""));
}

void InfoSink::lossLines(const LossFinder& losses) {
    line("losses", std::to_string(losses.count()));
    size_t listed = 0;
    for (const Loss& loss : losses.losses()) {
        if (listed++ < kListed) {
            line("", lossWords(loss));
        }
    }
    if (losses.count() > kListed) {
        line("", std::to_string(losses.count() - kListed) + " more");
    }
}

void InfoSink::damageLines(const DamageLog& damage) {
    countLine("zero records", damage.count(Damage::ZeroRecord));
    countLine("cut records", damage.count(Damage::CutRecord));
    countLine("passed", damage.passed(),
              damage.passed() == 1 ? " byte that is no whole record"
                                   : " bytes that are no whole record");
    countLine("bad numbers", damage.count(Damage::Misnumbered));
    countLine("bad counts", damage.count(Damage::CountTooLarge));
    countLine("cut lines", damage.count(Damage::CutLine));
    countLine("bad lines", damage.count(Damage::BadLine));
    line("damage", damage.any() ? "yes, listed on standard error" : "none");
}

void InfoSink::endFile(const DumpEnd& end) {
    mTotals.add(mFile, end, mSessions);
    if (mFile.kind != DumpKind::None) {
        lossLines(end.losses);
        line("records", std::to_string(end.records));
        damageLines(end.damage);
    }
    mProgress.clear();
    mOutput.flush();
}

void InfoSink::totalLines() {
    mOutput.append("total: " + std::to_string(mTotals.files) + " files, " +
                   std::to_string(mTotals.damaged) + " with damage\n");
    line("records",
         std::to_string(mTotals.records) + " in " + std::to_string(mTotals.sessions) + " sessions");
    line("losses", std::to_string(mTotals.losses));
    for (const InfoTotals::FileLoss& each : mTotals.listed) {
        line("", lossWords(each.loss) + ": " + each.path);
    }
    if (mTotals.losses > mTotals.listed.size()) {
        line("", std::to_string(mTotals.losses - mTotals.listed.size()) + " more");
    }
}

bool InfoSink::finish() {
    if (mTotals.files > 1) {
        totalLines();
    }
    return mOutput.finish();
}

}  // namespace vdrdump
