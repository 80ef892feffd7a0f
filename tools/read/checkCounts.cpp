#include "tools/read/checkCounts.h"

#include <string>

namespace vdrdump {
namespace {

bool exceeds(const Record& record, const ArrayField& array) {
    return record.bytes[array.countOffset] > array.capacity;
}

}  // namespace

void checkCounts(const Record& record, DamageLog& damage) {
    bool any = false;
    for (const ArrayField* array : kArrays) {
        any |= exceeds(record, *array);
    }
    if (!any || !damage.add(Damage::CountTooLarge)) {
        return;
    }
    std::string expected;
    for (const ArrayField* array : kArrays) {
        if (exceeds(record, *array)) {
            expected += expected.empty() ? "" : "; ";
            expected += std::string(array->name) + " to count at most " +
                        std::to_string(array->capacity) + ", found " +
                        std::to_string(record.bytes[array->countOffset]);
        }
    }
    damage.describe(record.offset, expected);
}

}  // namespace vdrdump
