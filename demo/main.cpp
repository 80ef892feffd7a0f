#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Options.h"
#include "demo/RecorderLibrary.h"
#include "demo/SessionPlan.h"
#include "demo/SessionReport.h"

int main(int argc, char** argv) {
    constexpr int kPlayed = 0;
    constexpr int kNotPlayed = 1;
    demo::Options options;
    int status = kPlayed;
    if (!options.parse(argc, argv, status)) {
        return status;
    }
    demo::DeviceRoot root(options);
    if (!root.prepare()) {
        return kNotPlayed;
    }
    zk::IVideoDataRecoder* const recorder = demo::RecorderLibrary::load(options.library);
    if (recorder == nullptr) {
        return kNotPlayed;
    }
    const demo::SessionPlan plan(options.frames);
    const demo::SessionReport report(options, plan, root);
    demo::CameraSession session(*recorder, options, plan);
    if (!session.play()) {
        return kNotPlayed;
    }
    report.print(session);
    return kPlayed;
}
