#include "recorder/IVideoDataRecoder.h"
#include "recorder/ZkaVideoDataRecoderImpl.h"

namespace zk {
namespace {

// Constructed while the library is loaded, destroyed by its exit handlers.
ZkaVideoDataRecoderImpl recorder;

}  // namespace

__attribute__((visibility("default"))) IVideoDataRecoder* getVideoDataRecoderInstance() {
    return &recorder;
}

}  // namespace zk
