#include "records/FieldTags.h"

#include "records/VDRData1.h"

namespace zk {
namespace {

// Level 1 has every field there is; a level may lack some, and its writers are then null.
#define VDR_SCALAR_NAME(field) #field,
#define VDR_ARRAY_NAME(field, count) #field,
constexpr const char* kFieldNames[] = {VDR1_FIELDS(VDR_SCALAR_NAME, VDR_ARRAY_NAME)};

static_assert(sizeof(kFieldNames) / sizeof(kFieldNames[0]) == kTagCount, "tags 0 to 38");

}  // namespace

std::unordered_map<std::string, uint16_t> makeName2Tag() {
    std::unordered_map<std::string, uint16_t> tags;
    for (uint16_t tag = 0; tag < kTagCount; ++tag) {
        tags.emplace(kFieldNames[tag], tag);
    }
    return tags;
}

}  // namespace zk
