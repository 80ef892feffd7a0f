#include "tools/schema/sparkSchema.h"

#include "tools/schema/TableColumn.h"

namespace vdrdump {
namespace {

// Spark has no unsigned numbers: the next wider type holds them, for 64 bits a decimal one.
std::string typeOf(Kind kind) {
    switch (kind) {
        case Kind::U8:
        case Kind::I16:
            return "SMALLINT";
        case Kind::U16:
        case Kind::I32:
            return "INT";
        case Kind::U32:
            return "BIGINT";
        case Kind::U64:
            return "DECIMAL(20,0)";
        case Kind::F32:
            return "FLOAT";
        case Kind::Text:
            break;
    }
    return "STRING";
}

std::string columnTypeOf(const TableColumn& column) {
    if (column.array == nullptr) {
        return typeOf(column.kind);
    }
    const auto member = [](const Column& each) {
        return std::string(each.name) + ": " + typeOf(each.kind);
    };
    return "ARRAY<STRUCT<" + listOf(*column.array, ", ", member) + ">>";
}

// Floats are read as text: one column of a reader takes one spelling of nan, and a negative nan,
// which the C library prints with its sign, would be a second.
std::string typeInCsv(const TableColumn& column) {
    const bool isText = column.array != nullptr || column.kind == Kind::F32;
    return isText ? "STRING" : typeOf(column.kind);
}

std::string valueOf(Kind kind, const std::string& text) {
    switch (kind) {
        case Kind::Text:
            return text;
        case Kind::F32:
            return "CAST(replace(" + text + ", '-nan', 'nan') AS FLOAT)";
        default:
            return "CAST(" + text + " AS " + typeOf(kind) + ")";
    }
}

std::string valueInCsv(const TableColumn& column) {
    const std::string name = column.name;
    if (column.array == nullptr) {
        return column.kind == Kind::F32 ? valueOf(column.kind, name) + " AS " + name : name;
    }
    int place = 0;
    const auto member = [&place](const Column& each) {
        return "'" + std::string(each.name) + "', " +
               valueOf(each.kind, "e[" + std::to_string(place++) + "]");
    };
    return "transform(from_json(" + name + ", 'ARRAY<ARRAY<STRING>>'), e -> named_struct(" +
           listOf(*column.array, ", ", member) + ")) AS " + name;
}

// An empty cell is no value and "" an empty name; Spark tells them apart where null is neither.
constexpr char kCsvOptions[] = R"(OPTIONS (
    path '${frames}', header 'true', escape '"', nullValue '\\N', emptyValue '', mode 'FAILFAST'
))";

}  // namespace

std::string sparkSchema() {
    const std::string columns = declarationsOf(tableColumns(), ",\n    ", columnTypeOf);
    std::string sql =
            "CREATE TABLE IF NOT EXISTS frames (\n    " + columns + "\n) USING parquet;\n\n";
    sql += "CREATE OR REPLACE TEMPORARY VIEW frames_cells (\n    " +
           declarationsOf(tableColumns(), ",\n    ", typeInCsv) + "\n) USING csv " + kCsvOptions +
           ";\n\n";
    sql += "CREATE OR REPLACE TEMPORARY VIEW frames_csv AS SELECT\n    " +
           listOf(tableColumns(), ",\n    ", valueInCsv) + "\nFROM frames_cells;\n\n";
    sql += "CREATE OR REPLACE TEMPORARY VIEW frames_ndjson (\n    " + columns +
           "\n) USING json OPTIONS (\n    path '${frames}', mode 'FAILFAST'\n);\n";
    return sql;
}

}  // namespace vdrdump
