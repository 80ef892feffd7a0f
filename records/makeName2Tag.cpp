#include "records/makeName2Tag.h"

#include "records/FieldTags.h"

namespace zk {

#define VDR_SCALAR_ENTRY(field) {#field, static_cast<uint16_t>(tag::field)},
#define VDR_ARRAY_ENTRY(field, count) VDR_SCALAR_ENTRY(field)

std::unordered_map<std::string, uint16_t> makeName2Tag() {
    return {VDR1_FIELDS(VDR_SCALAR_ENTRY, VDR_ARRAY_ENTRY)};
}

}  // namespace zk
