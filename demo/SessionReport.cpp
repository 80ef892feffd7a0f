#include "demo/SessionReport.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "demo/NodePipeline.h"
#include "records/frameData.h"

namespace demo {
namespace fs = std::filesystem;

namespace {

const char* inWords(const std::optional<zk::VdrSyncCode>& answer) {
    if (!answer) {
        return "without an answer";
    }
    return *answer == zk::VDR_SYNC_DONE ? "answered \"done\"" : "answered \"limited\"";
}

size_t linesOf(const std::string& path) {
    std::ifstream file(path);
    const std::istreambuf_iterator<char> begin(file);
    return static_cast<size_t>(std::count(begin, {}, '\n'));
}

// The program that is built beside this one, as a shell here would call it.
std::string vdrdumpPath() {
    const fs::path build = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    const fs::path program = build / "tools" / "vdrdump";
    return fs::exists(program) ? fs::proximate(program).string() : "vdrdump";
}

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

// With this process's output as its own. Where it cannot be run nothing more is to be said.
void run(std::vector<std::string> words) {
    std::fflush(stdout);
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0) {
        waitpid(child, nullptr, 0);
    }
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
    const Sizes now = sizesIn(folder);
    Sizes written;
    std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                        std::inserter(written, written.end()));
    return written;
}

void SessionReport::print(const CameraSession& session) const {
    const Sizes dumps = writtenSince(mDumpsBefore, mRoot.dumpFolder());
    const Sizes losses = writtenSince(mLossesBefore, mRoot.lossFolder());
    printSession(session);
    printLoss(session);
    printFiles(dumps, losses);
    printCommands(session, dumps, losses);
    explain(dumps, losses);
}

void SessionReport::printSession(const CameraSession& session) const {
    std::printf("Played\n  frames       %u to %u at level %u, %s\n", mPlan.frames.first,
                mPlan.frames.last, mOptions.level,
                mOptions.realtime ? "30 a second" : "as fast as possible");
    std::printf("  status       %s\n",
                mOptions.steady ? "invented" : "this machine's, from the recorder's sampler");
    std::printf("  recording    frames %u to %u, %u records went along\n", mPlan.video.first,
                mPlan.video.last - 1, session.videoRecords());
    std::printf("  live photo   frames %u to %u asked for, reply state %d, received",
                mPlan.requested.first, mPlan.requested.last, session.livePhoto().replyState());
    for (const uint32_t frame : session.livePhoto().framesReceived()) {
        std::printf(" %u", frame);
    }
    std::printf("\n  fences       %u parked, %u taken back\n", session.chi().parked(),
                session.chi().takenBack());
}

void SessionReport::printLoss(const CameraSession& session) const {
    const std::string node = NodePipeline::troubledNode(mOptions.cause);
    switch (mOptions.cause) {
        case Cause::kStuckNode:
            std::printf("  cause        node %s holds frame %u for ten frame times\n", node.c_str(),
                        mPlan.troubled);
            break;
        case Cause::kSlowAllocation:
            std::printf("  cause        node %s waits ten frame times for a buffer for frame %u\n",
                        node.c_str(), mPlan.troubled);
            break;
        case Cause::kThermal:
            std::printf("  cause        hot from frame %u on, all nodes slow down\n",
                        mPlan.hotFrom);
            break;
        case Cause::kNone:
            std::printf("  cause        none\n");
            break;
    }
    if (const auto& slow = session.slowAllocation()) {
        std::printf("  allocation   %s, %u KiB in %u s\n", slow->itemName,
                    uint32_t{slow->allocSizeKB}, uint32_t{slow->allocTimeSec});
    }
    for (const DropMonitor::Drop& drop : session.drops().drops()) {
        std::printf("  lost frame   %u, announced and %s\n", drop.frame, inWords(drop.answer));
    }
}

void SessionReport::printFiles(const Sizes& dumps, const Sizes& losses) const {
    std::printf("\nWrote\n");
    for (const auto& [path, size] : dumps) {
        std::printf("  %s\n    %lu bytes, %lu records\n", path.c_str(), size,
                    size / zk::kFrameRecordSize);
    }
    for (const auto& [path, size] : losses) {
        std::printf("  %s\n    %lu bytes, %zu lines\n", path.c_str(), size, linesOf(path));
    }
    std::printf("  %s\n    the recorder's log\n", mRoot.logPath().c_str());
    std::ofstream(mRoot.namesPath()) << NodePipeline::names();
    std::printf("  %s\n    the names of the nodes\n", mRoot.namesPath().c_str());
}

void SessionReport::printCommands(const CameraSession& session, const Sizes& dumps,
                                  const Sizes& losses) const {
    const std::string vdrdump = vdrdumpPath();
    std::printf("\nRead\n");
    for (const auto& [path, size] : dumps) {
        std::printf("  %s info %s\n", vdrdump.c_str(), path.c_str());
    }
    const auto& drops = session.drops().drops();
    if (!losses.empty() && !drops.empty()) {
        std::printf("  %s show %s --frame %u\n", vdrdump.c_str(), losses.begin()->first.c_str(),
                    drops.front().frame);
        std::printf("  %s -o %s\n", joined(aboutLosses("report", dumps, losses)).c_str(),
                    mRoot.pagePath().c_str());
    }
}

void SessionReport::explain(const Sizes& dumps, const Sizes& losses) const {
    const std::vector<std::string> words = aboutLosses("explain", dumps, losses);
    std::printf("\nExplained by %s\n", joined(words).c_str());
    run(words);
}

// Both kinds of file: they are one history, in which each frame counts once.
std::vector<std::string> SessionReport::aboutLosses(const char* command, const Sizes& dumps,
                                                    const Sizes& losses) const {
    std::vector<std::string> words = {vdrdumpPath(), command};
    for (const Sizes* const files : {&dumps, &losses}) {
        for (const auto& [path, size] : *files) {
            words.push_back(path);
        }
    }
    words.insert(words.end(), {"--names", mRoot.namesPath()});
    return words;
}

}  // namespace demo
