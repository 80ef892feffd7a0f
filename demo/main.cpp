#include <cstdio>
#include <exception>

#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Options.h"
#include "demo/RecorderLibrary.h"
#include "demo/SessionPlan.h"
#include "demo/SessionReport.h"

int main(int argc, char** argv) {
    demo::Options options;
    int status = 0;
    if (!options.parse(argc, argv, status)) {
        return status;
    }
    try {
        const demo::DeviceRoot root(options);
        root.prepare();
        zk::IVideoDataRecoder& recorder = demo::RecorderLibrary::load(options.library);
        const demo::SessionPlan plan(options.frames);
        const demo::SessionReport report(options, plan, root);
        demo::CameraSession session(recorder, options, plan);
        session.play();
        report.print(session);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vdr_demo: %s\n", error.what());
        return 1;
    }
    return 0;
}
