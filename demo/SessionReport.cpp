#include "demo/SessionReport.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <string>

#include "demo/Terminal.h"

namespace demo {
namespace {

constexpr int kIndent = 2;
constexpr size_t kMostAllocationsShown = 4;

// The styled JSON of the reply on one line.
std::string onOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        if (c != '\n' && c != '\t' && c != ' ') {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

void printCosts(const char* kind, const vdr1::AlgoCostTime* costs, unsigned count) {
    std::printf("  %s algorithms, milliseconds:", kind);
    for (unsigned i = 0; i < count; ++i) {
        std::printf(" %.6s %u", costs[i].name, costs[i].cost);
    }
    std::printf("\n");
}

// The program that is built beside this one, as a shell here would call it.
std::string vdrdumpPath() {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path().parent_path();
    const fs::path program = folder / "tools" / "vdrdump";
    return fs::exists(program, error) ? fs::proximate(program, error).string() : "vdrdump";
}

}  // namespace

SessionReport::SessionReport(const Options& options, const DeviceRoot& root,
                             const SessionPlan& plan, const CameraSession& session,
                             const BinFileCheck& binFile, const TextFileCheck& textFiles,
                             const Findings& findings)
      : mOptions(options),
        mRoot(root),
        mPlan(plan),
        mSession(session),
        mBinFile(binFile),
        mTextFiles(textFiles),
        mFindings(findings) {}

void SessionReport::print() const {
    printSession();
    printFiles();
    printFirstRecord();
    printDrops();
    printLivePhoto();
    printStatus();
    printRegistries();
    printVerdict();
}

void SessionReport::printSession() const {
    std::printf("Session\n");
    std::printf("  level %" PRIu32 ", scene mode %" PRId32 ", frames %" PRIu32 " to %" PRIu32
                ", %s\n",
                mOptions.level, SessionPlan::kSceneMode, mPlan.frames.first, mPlan.frames.last,
                mOptions.realtime ? "30 a second" : "as fast as possible");
    std::printf("  video recording from frame %" PRIu32 ", ended at frame %" PRIu32 "\n",
                mPlan.video.first, mPlan.video.last);
}

void SessionReport::printFiles() const {
    std::printf("\nFiles\n");
    if (!mBinFile.path().empty()) {
        std::printf("  %s\n    %" PRIu64 " bytes; frames of this session: %" PRIu32
                    ", 4096 bytes each\n",
                    mBinFile.path().c_str(), mBinFile.size(), mBinFile.recordsRead());
    }
    const int lineWidth = std::max(Terminal::width() - 2 * kIndent, 1);
    for (const TextFileCheck::File& file : mTextFiles.files()) {
        std::printf("  %s\n    %" PRIu64 " bytes, %" PRIu32 " lines, frames %" PRIu32 " to %" PRIu32
                    ", mode %04" PRIo32 "\n    %.*s\n",
                    file.path.c_str(), file.size, file.lines, file.expected.firstFrame,
                    file.expected.lastFrame, file.mode, lineWidth, file.firstLine.c_str());
    }
    std::printf("  %s\n    the recorder's log\n", mRoot.logPath().c_str());
}

void SessionReport::printFirstRecord() const {
    const vdr1::VDRData1& record = mBinFile.firstRecord();
    std::printf("\nFirst record\n");
    std::printf("  frame %" PRIu32
                ", zoom %.2f, master camera %u, sensor mode %u, capture type "
                "%u\n",
                uint32_t{record.frameNumber}, static_cast<double>(record.zoomRatio),
                record.masterCameraId, record.sensorModeIndex, record.captureType);
    std::printf(
            "  %u feature requests, %u feature messages, %u pipeline nodes, %u white-balance "
            "scenes\n",
            record.featureRequestStateInfoCount, record.featureMessageTypeInfoCount,
            record.nodeInfoCount, record.awbInfo_qawb_cap_saCount);
    printCosts("plug-in", record.pluginAlgoCostTime, record.pluginAlgoCostTimeCount);
    printCosts("semantic", record.semantAlgoCostTime, record.semantAlgoCostTimeCount);
    std::printf("  memory available %" PRIu32 " kB, load average over one minute %.2f%s\n",
                uint32_t{record.sysStatusInfo.memAvailable},
                static_cast<double>(record.sysStatusInfo.loadAvg1),
                mOptions.steady ? " (invented: --steady)" : "");
}

void SessionReport::printDrops() const {
    std::printf("\nFrame drops\n");
    const auto& drops = mSession.drops().drops();
    for (const DropAnnouncer::Drop& drop : drops) {
        std::printf("  frame %" PRIu32 ", time stamp %" PRIu64 " us: promise %s\n", drop.frame,
                    drop.timeStamp, DropAnnouncer::inWords(drop.answer));
    }
    if (drops.empty()) {
        std::printf("  none announced\n");
    } else if (drops.size() > 1) {
        std::printf("  (when it stops, the recorder answers the latest drop it has taken)\n");
    }
    if (mSession.drops().forecast().wroteAtStop()) {
        std::printf(
                "  (the stop ordered the last file: where that is written sooner than its count "
                "is\n  taken, the promise stays pending)\n");
    }
}

void SessionReport::printLivePhoto() const {
    const LivePhotoShot& shot = mSession.livePhoto();
    std::printf("\nLive photo\n  frames %" PRIu32 " to %" PRIu32 " cached, %" PRIu32 " to %" PRIu32
                " requested; the application counts from %" PRIu32 "\n",
                mPlan.livePhoto.first, mPlan.livePhoto.last, mPlan.requested.first,
                mPlan.requested.last, LivePhotoShot::kFirstAppFrame);
    std::printf("  reply: %s\n  frames in the shared buffer:", onOneLine(shot.reply()).c_str());
    for (const uint32_t frame : shot.framesReceived()) {
        std::printf(" %" PRIu32, frame);
    }
    std::printf("\n");
}

void SessionReport::printStatus() const {
    const zk::SysStatusCollection& s = mSession.sampler().snapshot();
    std::printf("\nLast status snapshot (0: this machine does not say)\n");
    std::printf("  processors 0, 4 and 7 at %" PRId32 ", %" PRId32 " and %" PRId32 " kHz\n",
                int32_t{s.cpu0Freq}, int32_t{s.cpu4Freq}, int32_t{s.cpu7Freq});
    std::printf("  this process uses %u percent of all processors (%.1f by its own clock)\n",
                unsigned{s.cpuUsage}, mSession.sampler().ownUsage());
    std::printf("  load average over 1, 5 and 15 minutes: %.2f, %.2f, %.2f runnable tasks\n",
                static_cast<double>(s.loadAvg1), static_cast<double>(s.loadAvg5),
                static_cast<double>(s.loadAvg15));
    std::printf("  memory free %" PRIu32 " kB, available %" PRIu32 " kB, captures hold %" PRIu32
                "\n",
                uint32_t{s.memFree}, uint32_t{s.memAvailable}, uint32_t{s.usedMem});
    std::printf("  temperatures as the driver states them: front %" PRId32 ", back %" PRId32
                ", frame %" PRId32 ", ambient %" PRId32 "\n",
                int32_t{s.shellFrontTemp}, int32_t{s.shellBackTemp}, int32_t{s.shellFrameTemp},
                int32_t{s.ambientTemp});
    std::printf("  thermal level %u of 15, escape state %u of 3\n", s.thermalLevel,
                s.thermalEscapeState);
    std::printf("  graphics at %" PRId32 " Hz, %u percent busy; panel brightness %" PRId32
                " and %" PRId32 "\n",
                int32_t{s.gpuFreq}, unsigned{s.gpuBusy}, int32_t{s.panel0Brightness},
                int32_t{s.panel1Brightness});
    std::printf("  charger %s, fold state %u\n", s.usbOnline != 0 ? "present" : "absent",
                s.foldState);
    std::printf("  %" PRIu32 " seconds of video recorded, %u snapshots counted\n",
                uint32_t{s.videoRecordSeconds}, unsigned{s.snapshotCount});
}

void SessionReport::printRegistries() const {
    const ChiThread& chi = mSession.chi();
    std::printf("\nRegistries\n  fences: %" PRIu32 " parked, %" PRIu32
                " taken back; frame numbers: %" PRIu32 " parked, %" PRIu32 " taken back\n",
                chi.framesParked(), chi.fencesTaken(), chi.framesParked(), chi.framesTaken());
    const auto& allocations = mBinFile.slowAllocations();
    std::printf("  slow allocations found in the records: %zu\n", allocations.size());
    for (size_t i = 0; i < std::min(allocations.size(), kMostAllocationsShown); ++i) {
        const auto& [frame, info] = allocations[i];
        std::printf("    frame %" PRIu32 ": %.40s, %" PRIu32 " KiB, %u seconds, type %u\n", frame,
                    info.itemName, uint32_t{info.allocSizeKB}, unsigned{info.allocTimeSec},
                    info.itemType);
    }
}

void SessionReport::printVerdict() const {
    if (mFindings.none()) {
        std::printf("\nEvery promise is kept.\n");
    } else {
        std::printf("\n%zu promises are broken:\n", mFindings.count());
        for (const std::string& promise : mFindings.broken()) {
            std::printf("  %s\n", promise.c_str());
        }
    }
    if (!mBinFile.path().empty()) {
        std::printf("%s info %s\n", vdrdumpPath().c_str(), mBinFile.path().c_str());
    }
}

}  // namespace demo
