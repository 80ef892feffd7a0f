#pragma once

#include <cstdint>
#include <vector>

#include "records/VDRData1.h"

namespace demo {

// The tags by name, in layout order.
namespace tag {
#define VDR_TAG(field) field,
#define VDR_ARRAY_TAG(field, count) field,
enum : uint32_t { VDR1_FIELDS(VDR_TAG, VDR_ARRAY_TAG) };
#undef VDR_ARRAY_TAG
#undef VDR_TAG
}  // namespace tag

// Takes a finished record apart again into the (tag, data) pairs that a pipeline would offer.
class FieldWrites {
public:
    // `record` must outlive this: the data point into it.
    explicit FieldWrites(const vdr1::VDRData1& record) : mRecord(record) {}

    // Adds the pairs of these fields, both included; a list comes with its count. A list starts
    // with an element that is taken back by writing the count, as after a request that was
    // submitted twice: a count tag without effect would show as one element too many.
    void add(uint32_t firstTag, uint32_t lastTag);

    const std::vector<uint32_t>& tags() const { return mTags; }
    const std::vector<const void*>& datas() const { return mDatas; }

    // Where a field starts in the record, in bytes.
    static uint32_t offsetOf(uint32_t fieldTag);
    // The field that this byte of a record belongs to.
    static const char* fieldAt(uint32_t offset);

private:
    void addList(uint32_t fieldTag);
    void addPair(uint32_t fieldTag, const void* data);

    const vdr1::VDRData1& mRecord;
    std::vector<uint32_t> mTags;
    std::vector<const void*> mDatas;
};

}  // namespace demo
