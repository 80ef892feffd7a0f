#include "demo/SessionReport.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "records/frameData.h"

namespace demo {
namespace fs = std::filesystem;

namespace {

const char* inWords(DropMonitor::Answer answer) {
    switch (answer) {
        case DropMonitor::Answer::kDone:
            return "the recorder answered \"done\"";
        case DropMonitor::Answer::kLimited:
            return "the recorder answered \"limited\"";
        case DropMonitor::Answer::kNone:
            break;
    }
    return "the recorder did not answer";
}

long linesOf(const std::string& path) {
    std::ifstream file(path);
    return std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
}

// The program that is built beside this one, as a shell here would call it.
std::string vdrdumpPath() {
    const fs::path build = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    return fs::proximate(build / "tools" / "vdrdump").string();
}

}  // namespace

SessionReport::SessionReport(const Options& options, const SessionPlan& plan,
                             const DeviceRoot& root)
      : mOptions(options),
        mPlan(plan),
        mRoot(root),
        mDumpsBefore(sizesIn(root.dumpFolder())),
        mLossesBefore(sizesIn(root.lossFolder())) {}

SessionReport::Sizes SessionReport::sizesIn(const std::string& folder) {
    Sizes sizes;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            sizes[entry.path().string()] = entry.file_size();
        }
    }
    return sizes;
}

SessionReport::Sizes SessionReport::writtenSince(const Sizes& before, const std::string& folder) {
    Sizes sizes = sizesIn(folder);
    for (const auto& [path, size] : before) {
        if (const auto now = sizes.find(path); now != sizes.end() && now->second == size) {
            sizes.erase(now);
        }
    }
    return sizes;
}

void SessionReport::print(const CameraSession& session) const {
    printSession(session);
    printCause(session);
    printFiles(writtenSince(mDumpsBefore, mRoot.dumpFolder()),
               writtenSince(mLossesBefore, mRoot.lossFolder()));
}

void SessionReport::printSession(const CameraSession& session) const {
    std::printf("Played\n  frames       %" PRIu32 " to %" PRIu32 " at level %" PRIu32 ", %s\n",
                mPlan.frames.first, mPlan.frames.last, mOptions.level,
                mOptions.realtime ? "30 a second" : "as fast as possible");
    std::printf("  status       %s\n", mOptions.steady ? "invented" : "this machine's, sampled");
    std::printf("  recording    frames %" PRIu32 " to %" PRIu32 "; %" PRIu32
                " records went along\n",
                mPlan.video.first, mPlan.video.last - 1, session.videoRecords());
    std::printf("  live photo   frames");
    for (const uint32_t frame : session.livePhoto().framesReceived()) {
        std::printf(" %" PRIu32, frame);
    }
    std::printf("; the recorder replied state %d\n", session.livePhoto().replyState());
    std::printf("  fences       %" PRIu32 " parked, %" PRIu32 " taken back\n",
                session.chi().parked(), session.chi().takenBack());
}

void SessionReport::printCause(const CameraSession& session) const {
    const auto node = NodePipeline::troubledNode(mOptions.cause);
    switch (mOptions.cause) {
        case Cause::kStuckNode:
            std::printf("  cause        node %s holds frame %" PRIu32
                        " for ten frame times, then gives it up\n",
                        node.c_str(), mPlan.troubled);
            break;
        case Cause::kSlowAllocation:
            std::printf(
                    "  cause        node %s waits ten frame times for a buffer for frame %" PRIu32
                    "\n",
                    node.c_str(), mPlan.troubled);
            break;
        case Cause::kThermal:
            std::printf("  cause        hot from frame %" PRIu32 " on, all nodes slow down\n",
                        mPlan.hotFrom);
            break;
        case Cause::kNone:
            std::printf("  cause        none, no frame is lost\n");
            break;
    }
    if (const auto& slow = session.slowAllocation()) {
        std::printf("  allocation   %s, %" PRIu32 " KiB in %u s\n", slow->itemName,
                    uint32_t{slow->allocSizeKB}, unsigned{slow->allocTimeSec});
    }
    for (const DropMonitor::Drop& drop : session.drops().drops()) {
        std::printf("  lost frame   %" PRIu32 ", announced as dropped; %s\n", drop.frame,
                    inWords(drop.answer));
    }
}

void SessionReport::printFiles(const Sizes& dumps, const Sizes& losses) const {
    std::printf("\nWrote\n");
    for (const auto& [path, size] : dumps) {
        std::printf("  %s\n    %" PRIu64 " bytes, %" PRIu64 " records\n", path.c_str(), size,
                    size / zk::kFrameRecordSize);
    }
    for (const auto& [path, size] : losses) {
        std::printf("  %s\n    %" PRIu64 " bytes, %ld lines\n", path.c_str(), size, linesOf(path));
    }
    std::printf("  %s\n    the recorder's log\n\nRead\n", mRoot.logPath().c_str());
    for (const auto& [path, size] : dumps) {
        std::printf("  %s info %s\n", vdrdumpPath().c_str(), path.c_str());
    }
    for (const auto& [path, size] : losses) {
        std::printf("  %s show %s\n", vdrdumpPath().c_str(), path.c_str());
    }
}

}  // namespace demo
