#include "tools/schema/clickhouseSchema.h"

#include "tools/schema/TableColumn.h"

namespace vdrdump {
namespace {

std::string typeOf(Kind kind) {
    switch (kind) {
        case Kind::U8:
            return "UInt8";
        case Kind::U16:
            return "UInt16";
        case Kind::U32:
            return "UInt32";
        case Kind::U64:
            return "UInt64";
        case Kind::I16:
            return "Int16";
        case Kind::I32:
            return "Int32";
        case Kind::F32:
            return "Float32";
        case Kind::Text:
            break;
    }
    return "String";
}

std::string nullable(const std::string& type) {
    return "Nullable(" + type + ")";
}

// An element is known as a whole; of its values only a float that is no number is null.
std::string elementTypeOf(const Column& column) {
    const std::string type = typeOf(column.kind);
    return column.kind == Kind::F32 ? nullable(type) : type;
}

// An array cannot be null: where the dump did not give it, its count is null and it is empty.
std::string columnTypeOf(const TableColumn& column) {
    if (column.array != nullptr) {
        return "Array(Tuple(" + declarationsOf(*column.array, ", ", elementTypeOf) + "))";
    }
    const std::string type = typeOf(column.kind);
    return column.isAlwaysKnown ? type : nullable(type);
}

}  // namespace

std::string clickhouseSchema() {
    return "CREATE TABLE IF NOT EXISTS frames (\n    " +
           declarationsOf(tableColumns(), ",\n    ", columnTypeOf) +
           "\n) ENGINE = MergeTree ORDER BY (file, session, record);\n";
}

}  // namespace vdrdump
