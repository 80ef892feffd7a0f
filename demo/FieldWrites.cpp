#include "demo/FieldWrites.h"

#include <cstddef>
#include <type_traits>

#include "records/FieldTags.h"
#include "records/VDRData2.h"

namespace demo {
namespace {

struct Field {
    const char* name;
    uint32_t offset;
    uint32_t elementSize;  // 0: no list
    uint32_t countOffset;
};

#define VDR_SCALAR_FIELD(field) {#field, offsetof(vdr1::VDRData1, field), 0, 0},
#define VDR_ARRAY_FIELD(field, count)                               \
    {#field, offsetof(vdr1::VDRData1, field),                       \
     sizeof(std::remove_extent_t<decltype(vdr1::VDRData1::field)>), \
     offsetof(vdr1::VDRData1, count)},
constexpr Field kFields[] = {VDR1_FIELDS(VDR_SCALAR_FIELD, VDR_ARRAY_FIELD)};
#undef VDR_ARRAY_FIELD
#undef VDR_SCALAR_FIELD
static_assert(std::size(kFields) == zk::tag::kCount, "one field per tag");

#define VDR_SAME_FIELD(field)                                                             \
    static_assert(offsetof(vdr1::VDRData1, field) == offsetof(vdr2::VDRData2, field) &&   \
                          sizeof(vdr1::VDRData1::field) == sizeof(vdr2::VDRData2::field), \
                  "the demo offers the same bytes at both levels");
#define VDR_SAME_ARRAY(field, count) VDR_SAME_FIELD(field)
VDR1_FIELDS(VDR_SAME_FIELD, VDR_SAME_ARRAY)
#undef VDR_SAME_ARRAY
#undef VDR_SAME_FIELD

constexpr bool everyCountPrecedesItsList() {
    for (uint32_t i = 1; i < zk::tag::kCount; ++i) {
        if (kFields[i].elementSize != 0 && kFields[i].countOffset != kFields[i - 1].offset) {
            return false;
        }
    }
    return true;
}
static_assert(everyCountPrecedesItsList(), "a list's count is the tag before it");

bool isList(uint32_t fieldTag) {
    return fieldTag < zk::tag::kCount && kFields[fieldTag].elementSize != 0;
}

constexpr uint8_t kNoElements = 0;

}  // namespace

uint32_t FieldWrites::offsetOf(uint32_t fieldTag) {
    return kFields[fieldTag].offset;
}

const char* FieldWrites::fieldAt(uint32_t offset) {
    if (offset >= sizeof(vdr1::VDRData1)) {
        return "the unused rest";
    }
    uint32_t fieldTag = zk::tag::kCount - 1;
    while (kFields[fieldTag].offset > offset) {
        --fieldTag;
    }
    return kFields[fieldTag].name;
}

void FieldWrites::add(uint32_t firstTag, uint32_t lastTag) {
    for (uint32_t fieldTag = firstTag; fieldTag <= lastTag; ++fieldTag) {
        if (isList(fieldTag)) {
            addList(fieldTag);
        } else if (!isList(fieldTag + 1)) {  // a count comes with its list
            addPair(fieldTag, reinterpret_cast<const uint8_t*>(&mRecord) + offsetOf(fieldTag));
        }
    }
}

void FieldWrites::addList(uint32_t fieldTag) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&mRecord);
    const Field& field = kFields[fieldTag];
    const uint8_t count = bytes[field.countOffset];
    if (count != 0) {
        addPair(fieldTag, bytes + field.offset);
    }
    addPair(fieldTag - 1, &kNoElements);
    for (size_t i = 0; i < count; ++i) {
        addPair(fieldTag, bytes + field.offset + i * field.elementSize);
    }
}

void FieldWrites::addPair(uint32_t fieldTag, const void* data) {
    mTags.push_back(fieldTag);
    mDatas.push_back(data);
}

}  // namespace demo
