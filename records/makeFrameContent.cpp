#include "records/makeFrameContent.h"

#include "platform/Log.h"
#include "records/VDRData1.h"
#include "records/VDRData2.h"

namespace zk {

void makeFrameContent(int32_t vdrLevel, const void* srcData, void* destData) {
    if (srcData == nullptr || destData == nullptr) {
        VDR_LOGE("VDR::makeFrameContent,  srcData/destData is nullptr!");
        return;
    }
    switch (vdrLevel) {
        case 1:
            vdr1::VDRData1::makeFrameContent(srcData, destData);
            break;
        case 2:
            vdr2::VDRData2::makeFrameContent(srcData, destData);
            break;
        default:
            VDR_LOGI("VDR::makeFrameContent, VDR level not match any!");
            break;
    }
}

}  // namespace zk
