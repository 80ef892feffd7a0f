#pragma once

#include <sqlite3.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/output/UnfinishedFile.h"

namespace vdrdump {

// A new SQLite database, which takes its place when it is complete. The first failure is said on
// standard error; what follows does nothing.
class Database {
public:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    // Must go before the database does.
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    explicit Database(const std::string& path);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void execute(const std::string& sql);
    // "INSERT INTO <table> VALUES" with a place for each of `columns` values.
    Statement prepareInsert(const std::string& table, size_t columns);
    // Runs it with what is bound, and takes the values away.
    void insert(sqlite3_stmt* statement);
    // No statement may be left.
    bool finish();
    bool hasFailed() const { return mHasFailed; }

private:
    void fail(const char* reason);

    const std::string mName;
    std::optional<UnfinishedFile> mFile;
    sqlite3* mDatabase = nullptr;
    bool mHasFailed = false;
};

}  // namespace vdrdump
