#include "records/makeFrameContent.h"

#include "platform/Log.h"
#include "records/RecordLevel.h"

namespace zk {

void makeFrameContent(int32_t vdrLevel, const void* srcData, void* destData) {
    if (srcData == nullptr || destData == nullptr) {
        VDR_LOGE("VDR::makeFrameContent,  srcData/destData is nullptr!");
        return;
    }
    const RecordLevel* const level = RecordLevel::find(vdrLevel);
    if (level == nullptr) {
        VDR_LOGI("VDR::makeFrameContent, VDR level not match any!");
        return;
    }
    level->makeFrameContent(srcData, destData);
}

}  // namespace zk
