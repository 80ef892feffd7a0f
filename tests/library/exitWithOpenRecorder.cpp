// Leaves main in the middle of a camera session, while the sampler is asleep, as a camera process
// does that is told to exit. It must come to its end by itself, with status 0.
#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "platform/host/ClockControl.h"
#include "recorder/IVideoDataRecoder.h"

int main() {
    constexpr unsigned kPatienceSeconds = 60;
    alarm(kPatienceSeconds);  // kills a process that hangs

    void* library = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* symbol =
            library != nullptr ? dlsym(library, "_ZN2zk27getVideoDataRecoderInstanceEv") : nullptr;
    if (symbol == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    static std::atomic<bool> isAsleep{false};
    zk::host::setSleepHandler([](uint32_t microseconds) {
        isAsleep = microseconds == 1000000;  // one second, or else this never ends by itself
        usleep(microseconds);
    });
    zk::IVideoDataRecoder* recorder = reinterpret_cast<zk::IVideoDataRecoder* (*)()>(symbol)();
    recorder->initialize(1, 0);
    while (!isAsleep) {
        std::this_thread::yield();
    }
    bool isOpen = false;
    recorder->getVDRStatus(&isOpen);
    return isOpen ? 0 : 1;
}
