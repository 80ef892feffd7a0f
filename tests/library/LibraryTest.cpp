#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/host/LogControl.h"
#include "recorder/IVideoDataRecoder.h"

namespace zk::test {
namespace {

TEST(LibraryTest, Loading_ConstructsTheRecorderAndUnloadingDestroysIt) {
    host::setLogOutput(nullptr);
    host::startLogCapture();
    void* const library = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    void* const symbol = dlsym(library, "_ZN2zk27getVideoDataRecoderInstanceEv");
    ASSERT_NE(symbol, nullptr) << dlerror();
    const auto told = host::capturedLog();
    ASSERT_FALSE(told.empty());
    EXPECT_NE(told.back().text.find("VDR::construct"), std::string::npos);
    bool isOpen = true;
    reinterpret_cast<IVideoDataRecoder* (*)()>(symbol)()->getVDRStatus(&isOpen);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(host::capturedLog().size(), told.size());
    dlclose(library);
    EXPECT_NE(host::capturedLog().back().text.find("VDR::deconstruct"), std::string::npos);
    host::stopLogCapture();
}

}  // namespace
}  // namespace zk::test
