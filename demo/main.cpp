#include <cstdio>
#include <exception>

#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Options.h"
#include "demo/RecorderLibrary.h"
#include "demo/SessionPlan.h"
#include "demo/SessionReport.h"

// To copy from: RecorderLibrary loads the recorder, CameraSession makes the calls of a session in
// their order, FrameWriter writes the fields of a frame, LivePhotoShot and ChiStack use the rest.
// In the place of a camera stand NodePipeline, FrameFactory and DeviceStatus, in that of the camera
// stack's services DropMonitor and DeviceRoot, which steer the host's stand-ins.
//
// The library is built without exceptions; none may pass through it. This program throws where a
// session cannot be played, and never in what the library calls back.
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
