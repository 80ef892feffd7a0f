#include "tools/schema/duckdbSchema.h"

#include "tools/schema/TableColumn.h"

namespace vdrdump {
namespace {

std::string typeOf(Kind kind) {
    switch (kind) {
        case Kind::U8:
            return "UTINYINT";
        case Kind::U16:
            return "USMALLINT";
        case Kind::U32:
            return "UINTEGER";
        case Kind::U64:
            return "UBIGINT";
        case Kind::I16:
            return "SMALLINT";
        case Kind::I32:
            return "INTEGER";
        case Kind::F32:
            return "FLOAT";
        case Kind::Text:
            break;
    }
    return "VARCHAR";
}

std::string typeOf(const Column& column) {
    return typeOf(column.kind);
}

std::string typeOf(const TableColumn& column) {
    if (column.array == nullptr) {
        return typeOf(column.kind);
    }
    return "STRUCT(" +
           declarationsOf(*column.array, ", ", [](const Column& each) { return typeOf(each); }) +
           ")[]";
}

std::string typeInCsv(const TableColumn& column) {
    return column.array == nullptr ? typeOf(column) : "VARCHAR";
}

// A list of lists in a cell, taken apart once as text: a number of 64 bits stays whole, and nan and
// inf, which JSON has as strings, are read as numbers.
std::string valueInCsv(const TableColumn& column) {
    if (column.array == nullptr) {
        return column.name;
    }
    int place = 0;
    const auto member = [&place](const Column& each) {
        return "'" + std::string(each.name) + "': CAST(e[" + std::to_string(++place) + "] AS " +
               typeOf(each) + ")";
    };
    return "list_transform(CAST(CAST(" + std::string(column.name) +
           " AS JSON) AS VARCHAR[][]), lambda e: {" + listOf(*column.array, ", ", member) +
           "}) AS " + column.name;
}

// The types of a reader's columns.
template <typename TypeOf>
std::string readerColumns(TypeOf type) {
    return "columns = {\n    " +
           listOf(tableColumns(), ",\n    ",
                  [&](const TableColumn& each) {
                      return "'" + std::string(each.name) + "': '" + type(each) + "'";
                  }) +
           "\n}";
}

}  // namespace

std::string duckdbSchema() {
    const auto type = [](const TableColumn& column) { return typeOf(column); };
    std::string sql = "CREATE TABLE IF NOT EXISTS frames (\n    " +
                      declarationsOf(tableColumns(), ",\n    ", type) + "\n);\n\n";
    // An empty cell is no value, "" an empty name.
    sql += "CREATE OR REPLACE MACRO frames_csv(path) AS TABLE SELECT\n    " +
           listOf(tableColumns(), ",\n    ", valueInCsv) +
           "\nFROM read_csv(path, auto_detect = false, header = true, delim = ',', quote = '\"',"
           " escape = '\"',\n    nullstr = '', allow_quoted_nulls = false, " +
           readerColumns(typeInCsv) + ");\n\n";
    sql += "CREATE OR REPLACE MACRO frames_ndjson(path) AS TABLE SELECT *\n"
           "FROM read_json(path, format = 'newline_delimited', " +
           readerColumns(type) + ");\n";
    return sql;
}

}  // namespace vdrdump
