#include <pthread.h>

#include <system_error>

#include "tests/faults/WholeSessionTest.h"

// Of the leak checker, where it is linked in.
extern "C" __attribute__((weak)) void __lsan_disable();
extern "C" __attribute__((weak)) void __lsan_enable();

namespace zk::test {
namespace {

// Every thread made from now on gets a stack of this size. Returns the size until now.
size_t setStackSize(size_t bytes) {
    size_t usual = 0;
    pthread_attr_t attributes;
    pthread_getattr_default_np(&attributes);
    pthread_attr_getstacksize(&attributes, &usual);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
    return usual;
}

using ThreadFaultTest = WholeSessionTest;

// The launcher's error is not the recorder's to catch. It must find everything in order, though,
// for whoever does catch it.
TEST_F(ThreadFaultTest, SamplerThatCannotBeStarted_EscapesToTheCallerAndIsStartedTheNextTime) {
    recorder();
    // The launcher is compiled into code that knows no exceptions, so that what it had allocated
    // for the thread, a hundred bytes, is not given back on the error's way out.
    if (__lsan_disable != nullptr) {
        __lsan_disable();
    }
    const size_t usual = setStackSize(size_t{1} << 52);  // there is no such stack
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(openSession(), std::system_error);
        closeSession();
    }
    setStackSize(usual);
    if (__lsan_enable != nullptr) {
        __lsan_enable();
    }
    bool isOpen = false;
    recorder().getVDRStatus(&isOpen);
    EXPECT_TRUE(isOpen);
    removeDumps();
    forgetLog();
    // Waits for the sampler's first cycle.
    expectSame(playSession(), mWhole);
}

}  // namespace
}  // namespace zk::test
