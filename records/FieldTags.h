#pragma once

#include <cstdint>

#include "records/VDRData1Layout.h"

// Tags name the fields at the interface: writeMaintain(frame, zk::tag::zoomRatio, &zoom). They are
// dense and follow the layout. Level 1 has every field there is; a level may lack some.
namespace zk::tag {

#define VDR_SCALAR_TAG(field) field,
#define VDR_ARRAY_TAG(field, count) field,
enum Tag : uint32_t { VDR1_FIELDS(VDR_SCALAR_TAG, VDR_ARRAY_TAG) kCount };
#undef VDR_ARRAY_TAG
#undef VDR_SCALAR_TAG

}  // namespace zk::tag
