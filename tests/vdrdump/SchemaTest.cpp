// What is declared for other engines is what the exports write.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sstream>

#include "tests/vdrdump/Dumps.h"
#include "tests/vdrdump/Program.h"

namespace vdrdump::test {
namespace {

// The columns of the statement that a schema begins with, a line each.
std::vector<std::string> declaredColumns(const std::string& schema) {
    std::istringstream in(schema);
    std::vector<std::string> names;
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "CREATE TABLE IF NOT EXISTS frames (");
    while (std::getline(in, line) && line[0] != ')') {
        std::istringstream words(line);
        words >> names.emplace_back();
    }
    return names;
}

std::vector<std::string> columnsOfCsv() {
    const Program program = run({"export", "--format", "csv"}, binaryOf({frame(1)}));
    std::istringstream header(program.out.substr(0, program.out.find('\n')));
    std::vector<std::string> columns;
    for (std::string name; std::getline(header, name, ',');) {
        columns.push_back(name);
    }
    return columns;
}

struct Declaration {
    const char* engine;
    const char* stamp;  // of 64 bits
    const char* type;   // of 8 bits
    const char* costs;  // an array
};

const Declaration kDeclarations[] = {
        {"duckdb", "setGmeNcsDep UBIGINT", "captureType UTINYINT",
         "pluginAlgoCostTime STRUCT(name VARCHAR, cost UTINYINT)[]"},
        {"clickhouse", "setGmeNcsDep Nullable(UInt64)", "captureType Nullable(UInt8)",
         "pluginAlgoCostTime Array(Tuple(name String, cost UInt8))"},
        {"spark", "setGmeNcsDep DECIMAL(20,0)", "captureType SMALLINT",
         "pluginAlgoCostTime ARRAY<STRUCT<name: STRING, cost: SMALLINT>>"},
};

class DeclaredTable : public testing::TestWithParam<Declaration> {};

TEST_P(DeclaredTable, HasTheColumnsOfTheCsvInTheirOrder) {
    const Program program = run({"schema", "--engine", GetParam().engine});
    ASSERT_EQ(program.status, 0) << program.err;
    EXPECT_EQ(declaredColumns(program.out), columnsOfCsv());
    for (const char* column : {GetParam().stamp, GetParam().type, GetParam().costs}) {
        EXPECT_NE(program.out.find("\n    " + std::string(column) + ",\n"), std::string::npos)
                << column;
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, DeclaredTable, testing::ValuesIn(kDeclarations),
                         [](const auto& row) { return std::string(row.param.engine); });

// What stands in a database, by name.
std::string objectsIn(sqlite3* database) {
    std::string result;
    const auto row = [](void* to, int, char** values, char**) {
        *static_cast<std::string*>(to) += std::string(values[0]) + "\n";
        return 0;
    };
    sqlite3_exec(database, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY name", row,
                 &result, nullptr);
    return result;
}

TEST(SqliteSchema, IsThatOfAnExportedDatabase) {
    const TempFolder folder;
    const std::string path = folder.path("out.db");
    ASSERT_EQ(run({"export", "--format", "sqlite", "-o", path}, binaryOf({frame(1)})).status, 0);
    sqlite3* exported = nullptr;
    sqlite3* declared = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &exported, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_open(":memory:", &declared), SQLITE_OK);
    const std::string sql = run({"schema", "--engine", "sqlite"}).out;
    EXPECT_EQ(sqlite3_exec(declared, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(declared);
    EXPECT_NE(objectsIn(declared), "");
    EXPECT_EQ(objectsIn(declared), objectsIn(exported));
    sqlite3_close(declared);
    sqlite3_close(exported);
}

TEST(Csv, EmptyName_IsToldFromOneThatIsNotKnown) {
    const std::string dump = binaryOf({frame(1), frame(2)});
    const Program program = run({"export", "--format", "csv", "--field", "memoryAllocTimeoutInfo"},
                                dump.substr(0, dump.size() - 200));
    EXPECT_NE(program.out.find(",1,\"\",0,0,0\n"), std::string::npos) << program.out;
    EXPECT_NE(program.out.find(",2,,,,\n"), std::string::npos) << program.out;
}

}  // namespace
}  // namespace vdrdump::test
