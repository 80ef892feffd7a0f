#pragma once

#include <cstddef>

#include "records/VDRData1Layout.h"

namespace zk::test {

// Where a tag's field lies in a record, of either level. Sizes in bytes, of one element for an
// array, whose count is the byte before it; a scalar has room for one.
struct FieldPlace {
    const char* name;
    size_t offset;
    size_t size;
    size_t capacity;
};

#define VDR_SCALAR_PLACE_OF(field) \
    {#field, offsetof(vdr1::VDRData1Layout, field), sizeof(vdr1::VDRData1Layout::field), 1},
#define VDR_ARRAY_PLACE_OF(field, count)                                                    \
    {#field, offsetof(vdr1::VDRData1Layout, field), sizeof(vdr1::VDRData1Layout::field[0]), \
     sizeof(vdr1::VDRData1Layout::field) / sizeof(vdr1::VDRData1Layout::field[0])},
inline constexpr FieldPlace kFieldPlaces[] = {  // by tag
        VDR1_FIELDS(VDR_SCALAR_PLACE_OF, VDR_ARRAY_PLACE_OF)};
#undef VDR_ARRAY_PLACE_OF
#undef VDR_SCALAR_PLACE_OF

}  // namespace zk::test
