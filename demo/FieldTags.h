#pragma once

#include <cstdint>

#include "records/VDRData1.h"

namespace zk::tag {
#define VDR_TAG(field) field,
#define VDR_ARRAY_TAG(field, count) field,
enum Tag : uint32_t { VDR1_FIELDS(VDR_TAG, VDR_ARRAY_TAG) kCount };
#undef VDR_ARRAY_TAG
#undef VDR_TAG
}  // namespace zk::tag
