#include <pthread.h>

#include <system_error>

#include "platform/host/DeviceControl.h"
#include "sysstatus/SysStatusCollection.h"
#include "tests/faults/WholeSessionTest.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define VDR_NO_LEAK_CHECK const __lsan::ScopedDisabler noLeakCheck
#endif
#endif
#ifndef VDR_NO_LEAK_CHECK
#define VDR_NO_LEAK_CHECK static_cast<void>(0)
#endif

namespace zk::test {
namespace {

// While it lives no thread can be made: the stack that each would get does not exist.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&mUsual);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, size_t{1} << 52);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoThreads() {
        pthread_setattr_default_np(&mUsual);
        pthread_attr_destroy(&mUsual);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t mUsual;
};

using ThreadFaultTest = WholeSessionTest;

// The launcher's error is not the recorder's to catch. It must find everything in order, though,
// for whoever does catch it.
TEST_F(ThreadFaultTest, SamplerThatCannotBeStarted_EscapesToTheCallerAndIsStartedTheNextTime) {
    freshDevice();
    const Outcome whole = playSession();
    freshDevice();
    recorder();
    {
        const NoThreads noThreads;
        // The launcher is compiled into code that knows no exceptions, so that what it had
        // allocated for the thread, a hundred bytes, is not given back on the error's way out.
        VDR_NO_LEAK_CHECK;
        for (int i = 0; i < 3; ++i) {
            EXPECT_THROW(openSession(), std::system_error);
            closeSession();
        }
    }
    bool isOpen = false;
    recorder().getVDRStatus(&isOpen);
    EXPECT_TRUE(isOpen);
    std::filesystem::remove(binFile());
    forgetLog();
    // Waits for the sampler's first cycle, and uses everything that has a lock.
    expectSame(playSession(), whole);
}

}  // namespace
}  // namespace zk::test
