#include "demo/RecorderLibrary.h"

#include <dlfcn.h>

#include <cstdio>

namespace demo {
namespace {

// zk::getVideoDataRecoderInstance()
constexpr char kSymbol[] = "_ZN2zk27getVideoDataRecoderInstanceEv";

}  // namespace

zk::IVideoDataRecoder* RecorderLibrary::load(const std::string& path) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* symbol = library != nullptr ? dlsym(library, kSymbol) : nullptr;
    if (symbol == nullptr) {
        std::fprintf(stderr, "vdr_demo: %s\n", dlerror());
        return nullptr;
    }
    const auto getInstance = reinterpret_cast<zk::IVideoDataRecoder* (*)()>(symbol);
    return getInstance();
}

}  // namespace demo
