#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/FieldTags.h"
#include "records/VDRData1.h"
#include "records/frameData.h"

namespace zk::bench {

// Elements in use of a record's arrays.
struct Elements {
    uint8_t features = 0;
    uint8_t messages = 0;
    uint8_t pluginCosts = 0;
    uint8_t semantCosts = 0;
    uint8_t nodes = 0;
    uint8_t balances = 0;
};

// A record of plausible values. Its stamps count from `stamp`: the line of a full record fits its
// 4096 bytes only where they are short.
vdr1::VDRData1 sampleRecord(const Elements& elements, uint64_t stamp);
vdr1::VDRData1 typicalRecord();
vdr1::VDRData1 fullRecord();
frameData asBlock(const vdr1::VDRData1& record);

// What the pipeline writes into one frame: every scalar and some elements of every array, 64
// writes; or, in one call, one write for each of the 39 tags.
class SampleFrame {
public:
    struct Write {
        uint32_t tagId;
        const void* data;
    };

    SampleFrame();
    SampleFrame(const SampleFrame&) = delete;
    SampleFrame& operator=(const SampleFrame&) = delete;

    void setNumber(uint32_t number) { mRecord.frameNumber = number; }
    const std::vector<Write>& writes() const { return mWrites; }
    // All that the writes copy.
    size_t writtenBytes() const { return mWrittenBytes; }
    const void* data(uint32_t tagId) const { return mDatas[tagId]; }

    const uint32_t* allTags() const { return mTags.data(); }
    const void* const* allDatas() const { return mDatas.data(); }

private:
    vdr1::VDRData1 mRecord;
    std::vector<Write> mWrites;
    size_t mWrittenBytes = 0;
    std::array<uint32_t, tag::kCount> mTags;
    std::array<const void*, tag::kCount> mDatas;
};

// Bytes that one write of this tag copies.
size_t sizeOfWrite(uint32_t tagId);

}  // namespace zk::bench
