#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Writes a database: `files`, `losses` (a view of the files of lost frames), `frames`, and one
// table per array. It is built beside its place and moved there when complete, so that a run that
// is broken off leaves an earlier database alone.
class SqliteSink : public RecordSink {
public:
    explicit SqliteSink(const std::string& path);
    ~SqliteSink() override;
    SqliteSink(const SqliteSink&) = delete;
    SqliteSink& operator=(const SqliteSink&) = delete;

    void beginFile(const DumpFile& file) override;
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(uint64_t records, const DamageLog& damage) override;
    bool finish() override;
    bool isDone() const override { return mHasFailed; }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    void createTables();
    void addElements(const ArrayField& array, sqlite3_stmt* insert, const Record& record,
                     uint32_t frame);
    void bindRecord(sqlite3_stmt* insert, const Record& record) const;
    void execute(const std::string& sql);
    Statement prepare(const std::string& sql);
    void insert(sqlite3_stmt* statement);
    void fail();

    const std::string mPath;
    const std::string mUnfinishedPath;
    sqlite3* mDatabase = nullptr;
    Statement mInsertFile;
    Statement mInsertSession;
    Statement mInsertFrame;
    std::vector<Statement> mInsertElement;  // one per array
    DumpFile mFile;
    bool mHasFailed = false;
};

}  // namespace vdrdump
