#include "tools/sink/Database.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/output/printablePath.h"

namespace vdrdump {

Database::Database(const std::string& path) : mName(printablePath(path)) {
    if (UnfinishedFile::isWrittenInPlace(path)) {
        fail("it is no plain file");
        return;
    }
    if (mFile.emplace(path).descriptor() < 0) {
        fail(std::strerror(errno));
        return;
    }
    if (sqlite3_open(mFile->path().c_str(), &mDatabase) != SQLITE_OK) {
        fail(sqlite3_errmsg(mDatabase));
        return;
    }
    // Nothing is lost with an unfinished database, so it needs neither journal nor flushes.
    execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE;"
            "BEGIN");
}

Database::~Database() {
    sqlite3_close(mDatabase);
}

void Database::execute(const std::string& sql) {
    if (!mHasFailed &&
        sqlite3_exec(mDatabase, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(sqlite3_errmsg(mDatabase));
    }
}

Database::Statement Database::prepareInsert(const std::string& table, size_t columns) {
    std::string sql = "INSERT INTO " + table + " VALUES (?";
    for (size_t i = 1; i < columns; ++i) {
        sql += ",?";
    }
    sqlite3_stmt* statement = nullptr;
    if (!mHasFailed &&
        sqlite3_prepare_v2(mDatabase, (sql + ")").c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        fail(sqlite3_errmsg(mDatabase));
    }
    return Statement(statement);
}

void Database::insert(sqlite3_stmt* statement) {
    if (!mHasFailed && sqlite3_step(statement) != SQLITE_DONE) {
        fail(sqlite3_errmsg(mDatabase));
    }
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
}

bool Database::finish() {
    execute("COMMIT");
    if (!mHasFailed) {
        sqlite3_close(mDatabase);
        mDatabase = nullptr;
        if (!mFile->complete()) {
            fail(std::strerror(errno));
        }
    }
    return !mHasFailed;
}

void Database::fail(const char* reason) {
    mHasFailed = true;
    std::fprintf(stderr, "vdrdump: %s: expected to write it: %s\n", mName.c_str(), reason);
}

}  // namespace vdrdump
