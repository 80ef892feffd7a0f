#pragma once

#include <array>
#include <cstring>
#include <map>
#include <memory>

#include "tools/record/Record.h"

namespace vdrdump {

// A record that outlives its reader.
class StoredRecord {
public:
    explicit StoredRecord(const Record& record) : mView(record) {
        std::memcpy(mBytes.data(), record.bytes, mBytes.size());
        mView.bytes = mBytes.data();
    }
    StoredRecord(const StoredRecord&) = delete;
    StoredRecord& operator=(const StoredRecord&) = delete;

    const Record& view() const { return mView; }

private:
    std::array<uint8_t, sizeof(Layout)> mBytes;
    Record mView;
};

// Frames of one camera session by their numbers. Several may share a record.
using FrameMap = std::map<uint32_t, std::shared_ptr<const StoredRecord>>;

}  // namespace vdrdump
