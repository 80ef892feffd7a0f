// Leaves main in the middle of everything, as a camera process does that is told to exit: four
// camera threads are inside the recorder, losses are announced, writers are queued and the sampler
// is asleep. The process must come to its end by itself, without a fault and without a wait for
// any of them. The argument says how: "return" from main or "exit" on another thread.
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "recorder/IVideoDataRecoder.h"
#include "records/FieldTags.h"
#include "sysstatus/SysStatusCollection.h"

namespace {

std::atomic<uint32_t> framesDone{0};
std::atomic<uint32_t> sessions{0};

// A session's frames are over when it closes, as the interface demands; all else goes on together.
// Never destroyed, like the recorder.
struct Frames {
    std::mutex turnstile;  // so that who closes the session is not kept out by ever new frames
    std::shared_mutex inside;
};
Frames& frames = *new Frames;

std::shared_lock<std::shared_mutex> enter() {
    const std::lock_guard turn(frames.turnstile);
    return std::shared_lock(frames.inside);
}

[[noreturn]] void pushFrames(zk::IVideoDataRecoder* recorder, uint32_t thread) {
    const uint8_t field[4096] = {};
    const int fd = memfd_create("photo", MFD_CLOEXEC);
    for (uint32_t number = 11 + thread;; number += 4) {
        const std::shared_lock frame = enter();
        recorder->VDRProcessing(number);
        recorder->writeMaintain(number, zk::tag::frameNumber, &number);
        for (uint32_t tag = zk::tag::frameNumber + 1; tag < zk::tag::kCount; ++tag) {
            recorder->writeMaintain(number, tag, field);
        }
        recorder->CacheDataForLivePhoto(number);
        recorder->DoneDataForLivePhoto(number);
        if (number % 50 == 0) {
            zk::host::MonitoringService::instance().announceFrameDrop(number, number + 5);
            recorder->PostDataForLivePhoto(fd, R"({"startFrame":0,"endFrame":99999})");
        }
        recorder->VDRDone(number);
        recorder->VDRReport(number);
        ++framesDone;
    }
}

[[noreturn]] void playSessions(zk::IVideoDataRecoder* recorder) {
    for (;; ++sessions) {
        recorder->initialize(1, 0);
        zk::SysStatusCollection status{};
        recorder->GetSystemStatus(status);
        const std::lock_guard turn(frames.turnstile);
        const std::lock_guard alone(frames.inside);
        recorder->unInitialize();
    }
}

}  // namespace

int main(int argc, char** argv) {
    constexpr unsigned kPatienceSeconds = 60;
    alarm(kPatienceSeconds);  // kills a process that hangs
    if (argc != 2) {
        return 2;
    }
    zk::host::setLogOutput(nullptr);
    zk::host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
    void* library = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* symbol =
            library != nullptr ? dlsym(library, "_ZN2zk27getVideoDataRecoderInstanceEv") : nullptr;
    if (symbol == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    zk::IVideoDataRecoder* recorder = reinterpret_cast<zk::IVideoDataRecoder* (*)()>(symbol)();
    dlclose(library);  // the library stays, or the first call fails
    for (uint32_t thread = 0; thread < 4; ++thread) {
        std::thread(pushFrames, recorder, thread).detach();
    }
    std::thread(playSessions, recorder).detach();
    while (framesDone < 500 || sessions < 2) {
        std::this_thread::yield();
    }
    if (std::strcmp(argv[1], "exit") == 0) {
        std::thread([] { std::exit(0); }).join();
    }
    return 0;
}
