#include "tools/record/ChosenValue.h"

namespace vdrdump {
namespace {

void appendElement(const ArrayField& array, size_t element, uint8_t columns,
                   std::vector<ChosenValue>& values) {
    for (size_t i = 0; i < array.columnCount; ++i) {
        const Column& column = array.columns[i];
        if ((columns >> i & 1) != 0) {
            values.push_back(
                    {std::string(array.name) + "[" + std::to_string(element) + "]." + column.name,
                     &column, &array, element});
        }
    }
}

}  // namespace

const uint8_t* ChosenValue::in(const Record& record) const {
    const bool isThere =
            array == nullptr ? record.knows(*column) : element < record.elements(*array);
    const size_t base = array == nullptr ? 0 : array->offset + element * array->elementSize;
    return isThere ? record.bytes + base + column->offset : nullptr;
}

std::vector<ChosenValue> chosenValues(const FieldChoice& fields) {
    std::vector<ChosenValue> values;
    for (size_t i = 1; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (!fields.wants(i)) {
            continue;
        }
        if (item.array == nullptr) {
            values.push_back({item.column.name, &item.column, nullptr, 0});
            continue;
        }
        for (size_t element = 0; element < item.array->capacity; ++element) {
            appendElement(*item.array, element, fields.columnsOf(*item.array, element), values);
        }
    }
    return values;
}

std::string arrayAsAWhole(const FieldChoice& fields) {
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const ArrayField* array = kItems[i].array;
        if (array == nullptr || !fields.wants(i)) {
            continue;
        }
        size_t elements = 0;
        for (size_t element = 0; element < array->capacity; ++element) {
            elements += fields.columnsOf(*array, element) != 0 ? 1 : 0;
        }
        if (elements == array->capacity) {
            return array->name;
        }
    }
    return "";
}

}  // namespace vdrdump
