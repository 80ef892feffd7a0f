#include "demo/BinFileCheck.h"
#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Findings.h"
#include "demo/FrameFactory.h"
#include "demo/Options.h"
#include "demo/RecorderLibrary.h"
#include "demo/SessionPlan.h"
#include "demo/SessionReport.h"
#include "demo/StatusTrack.h"
#include "demo/TextFileCheck.h"

namespace {

enum ExitStatus : int { kKept = 0, kBroken = 1, kWrongUsage = 2 };

ExitStatus play(const demo::Options& options) {
    demo::DeviceRoot root(options);
    if (!root.prepare()) {
        return kBroken;
    }
    zk::IVideoDataRecoder* const recorder = demo::RecorderLibrary::load(options.library);
    if (recorder == nullptr) {
        return kBroken;
    }
    const demo::SessionPlan plan(options);
    demo::StatusTrack track;
    const demo::FrameFactory factory(plan, track, options.steady);
    demo::BinFileCheck binFile(root.dumpFolder());
    demo::TextFileCheck textFiles(root.lossFolder());
    demo::Findings findings;

    demo::CameraSession session(*recorder, options, plan, factory, track, findings);
    session.play();
    binFile.run(plan, factory, findings);
    textFiles.run(session.drops().forecast(), factory, findings);
    demo::SessionReport(options, root, plan, session, binFile, textFiles, findings).print();
    return findings.none() ? kKept : kBroken;
}

}  // namespace

int main(int argc, char** argv) {
    demo::Options options;
    switch (options.parse(argc, argv)) {
        case demo::Options::Parsed::kHelp:
            demo::Options::printHelp();
            return kKept;
        case demo::Options::Parsed::kWrong:
            return kWrongUsage;
        case demo::Options::Parsed::kRun:
            break;
    }
    return play(options);
}
