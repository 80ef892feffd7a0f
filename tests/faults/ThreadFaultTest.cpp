#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "tests/faults/WholeSessionTest.h"

// Every thread that the recorder makes comes by here and can be refused.

namespace {

std::atomic<bool> threadsAreRefused{false};

}  // namespace

extern "C" {
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
    return threadsAreRefused ? EAGAIN : __real_pthread_create(thread, attributes, body, argument);
}
}

namespace zk::test {
namespace {

using ThreadFaultTest = WholeSessionTest;

TEST_F(ThreadFaultTest, SamplerThatCannotBeStarted_IsMissingFromThatSessionOnly) {
    threadsAreRefused = true;
    for (int i = 0; i < 2; ++i) {
        openSession();
        bool isOpen = false;
        recorder().getVDRStatus(&isOpen);
        EXPECT_TRUE(isOpen);
    }
    threadsAreRefused = false;
    EXPECT_EQ(transcript("E "),
              Lines(2, "E SystemStatusInit<LINE>: VDR::systemStatusInit, no thread, ret=" +
                               std::to_string(EAGAIN) + "!"));
    closeSession();
    EXPECT_EQ(countLogged("prepare to quit"), 0U) << "there is none";
    removeDumps();
    forgetLog();
    // Waits for the sampler's first cycle, on another thread.
    std::thread([this] { expectSame(playSession(), mWhole); }).join();
}

}  // namespace
}  // namespace zk::test
