#include "tools/record/FieldChoice.h"

#include <charconv>

namespace vdrdump {
namespace {

constexpr bool elementsFit(size_t most) {
    for (const ArrayField* array : kArrays) {
        if (array->capacity > most || array->columnCount > 8) {
            return false;
        }
    }
    return true;
}

// "[3].stamps_2", either part of which may be missing; `element` stays where there is none.
bool splitPart(const std::string& part, size_t& element, std::string& column) {
    size_t at = 0;
    if (part[0] == '[') {
        const char* const begin = part.data() + 1;
        const char* const end = part.data() + part.size();
        const auto [stop, error] = std::from_chars(begin, end, element);
        if (error != std::errc() || stop == end || *stop != ']') {
            return false;
        }
        at = static_cast<size_t>(stop + 1 - part.data());
    }
    if (at == part.size()) {
        return true;
    }
    column = part.substr(at + 1);
    return part[at] == '.' && !column.empty();
}

}  // namespace

FieldChoice::FieldChoice() {
    static_assert(elementsFit(kMostElements) && kItems[0].column.offset == 0);
    mItems.set();
    for (size_t i = 0; i < mColumns.size(); ++i) {
        mColumns[i].fill(allColumns(*kArrays[i]));
    }
}

void FieldChoice::startNaming() {
    if (mIsAll) {
        mIsAll = false;
        mItems.reset();
        mItems.set(0);
        for (auto& columns : mColumns) {
            columns.fill(0);
        }
    }
}

bool FieldChoice::add(const std::string& name) {
    const size_t end = name.find_first_of("[.");
    const std::string field = name.substr(0, end);
    bool isFound = false;
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (field != item.column.field && field != item.column.name) {
            continue;
        }
        if (item.array != nullptr) {
            return addPart(i, name.substr(field.size()));
        }
        if (end != std::string::npos) {
            return false;
        }
        startNaming();
        mItems.set(i);
        isFound = true;
    }
    return isFound;
}

bool FieldChoice::addPart(size_t item, const std::string& part) {
    const ArrayField& array = *kItems[item].array;
    size_t element = array.capacity;  // all
    std::string column;
    if (!part.empty() &&
        (!splitPart(part, element, column) || (part[0] == '[' && element >= array.capacity))) {
        return false;
    }
    uint8_t columns = column.empty() ? allColumns(array) : uint8_t{0};
    for (size_t i = 0; i < array.columnCount; ++i) {
        columns |= static_cast<uint8_t>(column == array.columns[i].name ? 1U << i : 0U);
    }
    if (columns == 0) {
        return false;
    }
    startNaming();
    mItems.set(item);
    for (size_t i = 0; i < array.capacity; ++i) {
        if (element == array.capacity || element == i) {
            mColumns[arrayIndex(array)][i] |= columns;
        }
    }
    return true;
}

std::vector<std::string> FieldChoice::names() {
    std::vector<std::string> names;
    for (const Item& item : kItems) {
        const std::string field = item.column.field;
        if (field != item.column.name && (names.empty() || names.back().rfind(field, 0) != 0)) {
            names.push_back(field);
        }
        names.emplace_back(item.column.name);
        for (size_t i = 0; item.array != nullptr && i < item.array->columnCount; ++i) {
            names.push_back(field + "." + item.array->columns[i].name);
        }
    }
    return names;
}

}  // namespace vdrdump
