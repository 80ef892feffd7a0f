#include "tools/sink/printFields.h"

#include <algorithm>
#include <string_view>

#include "tools/output/Output.h"
#include "tools/record/FieldChoice.h"

namespace vdrdump {
namespace {

std::string typeOf(const Column& column) {
    switch (column.kind) {
        case Kind::U8:
            return "u8";
        case Kind::U16:
            return "u16";
        case Kind::U32:
            return "u32";
        case Kind::U64:
            return "u64";
        case Kind::I16:
            return "i16";
        case Kind::I32:
            return "i32";
        case Kind::F32:
            return "f32";
        case Kind::Text:
            break;
    }
    return "text " + std::to_string(column.size);
}

struct Row {
    std::string name;
    std::string type;
    std::string unit;
    std::string meaning;
};

// Of any element.
uint8_t chosenColumns(const FieldChoice& choice, const ArrayField& array) {
    uint8_t columns = 0;
    for (size_t i = 0; i < array.capacity; ++i) {
        columns |= choice.columnsOf(array, i);
    }
    return columns;
}

std::vector<Row> rowsOf(const FieldChoice& choice, bool isFrameNumberNamed) {
    std::vector<Row> rows{{"name", "type", "unit", "meaning"}};
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        const bool isNamed = i != 0 || choice.isAll() || isFrameNumberNamed;
        if (!choice.wants(i) || !isNamed) {
            continue;
        }
        if (item.array == nullptr) {
            rows.push_back(
                    {item.column.name, typeOf(item.column), item.column.unit, item.column.meaning});
            continue;
        }
        const ArrayField& array = *item.array;
        rows.push_back(
                {array.name, "up to " + std::to_string(array.capacity), "", item.column.meaning});
        const uint8_t columns = chosenColumns(choice, array);
        for (size_t column = 0; column < array.columnCount; ++column) {
            if ((columns >> column & 1) != 0) {
                const Column& each = array.columns[column];
                rows.push_back({std::string(array.name) + "." + each.name, typeOf(each),
                                each.isId ? "id" : each.unit, each.meaning});
            }
        }
    }
    return rows;
}

std::string padded(const std::string& text, size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ') + "  ";
}

}  // namespace

bool printFields(const std::vector<std::string>& names, bool namesOnly) {
    Output output("-");
    if (namesOnly) {
        for (const std::string& name : FieldChoice::names()) {
            output.append(name + "\n");
        }
        return output.finish();
    }
    FieldChoice choice;
    for (const std::string& name : names) {
        choice.add(name);
    }
    size_t nameWidth = 0;
    size_t typeWidth = 0;
    const std::vector<Row> rows = rowsOf(
            choice, std::find(names.begin(), names.end(), kItems[0].column.name) != names.end());
    for (const Row& row : rows) {
        nameWidth = std::max(nameWidth, row.name.size());
        typeWidth = std::max(typeWidth, row.type.size());
    }
    for (const Row& row : rows) {
        constexpr size_t kUnitWidth = 4;
        output.append(padded(row.name, nameWidth) + padded(row.type, typeWidth) +
                      padded(row.unit, kUnitWidth) + row.meaning + "\n");
    }
    return output.finish();
}

}  // namespace vdrdump
