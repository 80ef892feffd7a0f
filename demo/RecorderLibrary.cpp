#include "demo/RecorderLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

namespace demo {
namespace {

// zk::getVideoDataRecoderInstance()
constexpr char kSymbol[] = "_ZN2zk27getVideoDataRecoderInstanceEv";

}  // namespace

zk::IVideoDataRecoder& RecorderLibrary::load(const std::string& path) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* symbol = library != nullptr ? dlsym(library, kSymbol) : nullptr;
    if (symbol == nullptr) {
        throw std::runtime_error(dlerror());
    }
    const auto getInstance = reinterpret_cast<zk::IVideoDataRecoder* (*)()>(symbol);
    return *getInstance();
}

}  // namespace demo
