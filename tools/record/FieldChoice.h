#pragma once

#include <array>
#include <bitset>
#include <iterator>
#include <string>
#include <vector>

#include "tools/record/RecordSchema.h"

namespace vdrdump {

// Which values of a record are wanted: all, until the first is named; the frame number always, as
// it says whose values the others are. A name is that of a field
// (sysStatusInfo), of one of its columns (sysStatusInfo_cpuUsage), or of a part of an array: a
// column of all elements (nodeInfo.stamps_2), an element (nodeInfo[3]), or both
// (nodeInfo[3].stamps_2).
class FieldChoice {
public:
    FieldChoice();

    // False, with nothing changed, when nothing is called so.
    bool add(const std::string& name);
    bool isAll() const { return mIsAll; }

    bool wants(size_t item) const { return mItems[item]; }
    // The wanted columns of an element, a bit each.
    uint8_t columnsOf(const ArrayField& array, size_t element) const {
        return mColumns[arrayIndex(array)][element];
    }

    // All names that add() takes, but those of single elements.
    static std::vector<std::string> names();
    static constexpr uint8_t allColumns(const ArrayField& array) {
        return static_cast<uint8_t>((1U << array.columnCount) - 1);
    }

private:
    static constexpr size_t kMostElements = 60;

    static constexpr size_t arrayIndex(const ArrayField& array) {
        size_t index = 0;
        while (kArrays[index] != &array) {
            ++index;
        }
        return index;
    }

    bool addPart(size_t item, const std::string& part);
    void startNaming();

    bool mIsAll = true;
    std::bitset<std::size(kItems)> mItems;
    std::array<std::array<uint8_t, kMostElements>, std::size(kArrays)> mColumns;
};

}  // namespace vdrdump
