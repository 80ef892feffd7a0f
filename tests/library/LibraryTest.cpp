#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/host/LogControl.h"
#include "recorder/IVideoDataRecoder.h"

namespace zk::test {
namespace {

using Recorder = IVideoDataRecoder;

TEST(LibraryTest, Loading_ConstructsTheRecorderAndUnloadingLeavesItThere) {
    host::setLogOutput(nullptr);
    host::startLogCapture();
    void* const library = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    void* const symbol = dlsym(library, "_ZN2zk27getVideoDataRecoderInstanceEv");
    ASSERT_NE(symbol, nullptr) << dlerror();
    const auto told = host::capturedLog();
    ASSERT_FALSE(told.empty());
    EXPECT_NE(told.back().text.find("VDR::construct"), std::string::npos);
    dlclose(library);
    bool isOpen = true;
    reinterpret_cast<Recorder* (*)()>(symbol)()->getVDRStatus(&isOpen);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(host::capturedLog().size(), told.size());
    host::stopLogCapture();
}

// What it says when the process ends, and when: in the library's exit handler.
TEST(LibraryTest, EndOfTheProcess_IsTold) {
    const auto loadAndExit = [] {
        host::setLogOutput(stderr);
        std::exit(dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL) != nullptr ? 0 : 1);
    };
    EXPECT_EXIT(loadAndExit(), testing::ExitedWithCode(0),
                "~ZkaVideoDataRecoderImpl<[0-9]+>: VDR::deconstruct ZkaVideoDataRecoderImpl!");
}

}  // namespace
}  // namespace zk::test
