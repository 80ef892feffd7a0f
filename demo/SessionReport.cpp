#include "demo/SessionReport.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "records/frameData.h"

namespace demo {
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

// The styled JSON of a reply on one line.
std::string onOneLine(std::string text) {
    std::replace_if(
            text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
    const auto isRepeated = [](char a, char b) { return a == ' ' && b == ' '; };
    text.erase(std::unique(text.begin(), text.end(), isRepeated), text.end());
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

long linesOf(const std::string& path) {
    std::ifstream file(path);
    return std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
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

SessionReport::SessionReport(const Options& options, const SessionPlan& plan,
                             const DeviceRoot& root)
      : mOptions(options),
        mPlan(plan),
        mRoot(root),
        mDumpsBefore(root.dumpFolder()),
        mLossesBefore(root.lossFolder()) {}

void SessionReport::print(const CameraSession& session) const {
    printSession(session);
    printFiles();
    printNextSteps();
}

void SessionReport::printSession(const CameraSession& session) const {
    std::printf("Played\n  frames       %" PRIu32 " to %" PRIu32 " at level %" PRIu32 ", %s\n",
                mPlan.frames.first, mPlan.frames.last, mOptions.level,
                mOptions.realtime ? "30 a second" : "as fast as possible");
    std::printf("  status       %s\n", mOptions.steady ? "invented" : "this machine's, sampled");
    std::printf("  recording    frames %" PRIu32 " to %" PRIu32 "; %" PRIu32
                " records went along\n",
                mPlan.video.first, mPlan.video.last - 1, session.videoRecords());
    const LivePhotoShot& shot = session.livePhoto();
    std::printf("  live photo   frames");
    for (const uint32_t frame : shot.framesReceived()) {
        std::printf(" %" PRIu32, frame);
    }
    std::printf("; reply %s\n", onOneLine(shot.reply()).c_str());
    std::printf("  fences       %" PRIu32 " parked, %" PRIu32 " taken back\n",
                session.chi().parked(), session.chi().takenBack());
    printCause(session);
}

void SessionReport::printCause(const CameraSession& session) const {
    const vdr1::NodeInfo node = NodePipeline::troubledNode(mOptions.cause);
    const std::string name = std::to_string(node.ids[0]) + "/" + std::to_string(node.ids[1]) + "/" +
                             std::to_string(node.ids[2]);
    std::printf("  cause        ");
    switch (mOptions.cause) {
        case Cause::kStuckNode:
            std::printf("node %s holds frame %" PRIu32 " for ten frame times and gives it up\n",
                        name.c_str(), mPlan.troubled);
            break;
        case Cause::kSlowAllocation:
            std::printf("node %s waits ten frame times for a buffer for frame %" PRIu32
                        "\n               (%s)\n",
                        name.c_str(), mPlan.troubled, session.slowAllocation().c_str());
            break;
        case Cause::kThermal:
            std::printf("the device is hot from frame %" PRIu32 " on, its nodes slow down\n",
                        mPlan.hotFrom);
            break;
        case Cause::kNone:
            std::printf("none\n");
            break;
    }
    for (const DropMonitor::Drop& drop : session.drops().drops()) {
        std::printf("  lost frame   %" PRIu32 ", announced as dropped; %s\n", drop.frame,
                    inWords(drop.answer));
    }
}

void SessionReport::printFiles() const {
    std::printf("\nWrote\n");
    for (const auto& [path, size] : FolderState(mRoot.dumpFolder()).writtenSince(mDumpsBefore)) {
        std::printf("  %s\n    %" PRIu64 " bytes, %" PRIu64 " records\n", path.c_str(), size,
                    size / zk::kFrameRecordSize);
    }
    for (const auto& [path, size] : FolderState(mRoot.lossFolder()).writtenSince(mLossesBefore)) {
        std::printf("  %s\n    %" PRIu64 " bytes, %ld lines\n", path.c_str(), size, linesOf(path));
    }
    std::printf("  %s\n    the recorder's log\n", mRoot.logPath().c_str());
}

void SessionReport::printNextSteps() const {
    const std::string vdrdump = vdrdumpPath();
    std::printf("\nLook into it\n");
    for (const auto& file : FolderState(mRoot.dumpFolder()).writtenSince(mDumpsBefore)) {
        std::printf("  %s info %s\n", vdrdump.c_str(), file.path.c_str());
    }
    for (const auto& file : FolderState(mRoot.lossFolder()).writtenSince(mLossesBefore)) {
        std::printf("  %s show %s --frame %" PRIu32 "\n", vdrdump.c_str(), file.path.c_str(),
                    mPlan.troubled);
    }
}

}  // namespace demo
