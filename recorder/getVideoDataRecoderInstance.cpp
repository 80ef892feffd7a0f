#include <new>

#include "recorder/IVideoDataRecoder.h"
#include "recorder/ZkaVideoDataRecoderImpl.h"

namespace zk {
namespace {

// Constructed while the library is loaded, and never destroyed: when the process ends, camera
// threads, writers and the sampler may be in the middle of anything, so no memory of theirs is
// given back and nobody waits for them. The library is never unloaded before (-z nodelete).
class Instance {
public:
    Instance() { new (mStorage) ZkaVideoDataRecoderImpl; }
    ~Instance() { recorder()->processEnds(); }

    ZkaVideoDataRecoderImpl* recorder() {
        return std::launder(reinterpret_cast<ZkaVideoDataRecoderImpl*>(mStorage));
    }

private:
    alignas(ZkaVideoDataRecoderImpl) unsigned char mStorage[sizeof(ZkaVideoDataRecoderImpl)];
};

Instance instance;

}  // namespace

__attribute__((visibility("default"))) IVideoDataRecoder* getVideoDataRecoderInstance() {
    return instance.recorder();
}

}  // namespace zk
