#include "records/RecordLevel.h"

#include "records/VDRData1.h"
#include "records/VDRData2.h"

namespace zk {
namespace {

#define VDR_LEVEL(number, Level) \
    { number, #Level, Level::getName2FuncMap, Level::makeFrameContent }
constexpr RecordLevel kLevels[] = {VDR_LEVEL(1, vdr1::VDRData1), VDR_LEVEL(2, vdr2::VDRData2)};

}  // namespace

const RecordLevel* RecordLevel::find(int32_t number) {
    for (const RecordLevel& level : kLevels) {
        if (level.number == number) {
            return &level;
        }
    }
    return nullptr;
}

}  // namespace zk
