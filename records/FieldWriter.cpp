#include "records/FieldWriter.h"

#include "platform/Log.h"

namespace zk {

void logNull(const char* writer, int line) {
    __android_log_print(kLogError, nullptr,
                        "%s<%d>: VDR::maintainData == nullptr || data == nullptr!", writer, line);
}

}  // namespace zk
