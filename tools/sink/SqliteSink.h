#pragma once

#include <string>
#include <vector>

#include "tools/record/FieldChoice.h"
#include "tools/sink/Database.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// Writes a database: `files`, `sessions`, `frames`, `gaps`, one table per array, and views that
// answer for losses and times. Of an array in part, what was not chosen is null.
class SqliteSink : public RecordSink {
public:
    SqliteSink(const std::string& path, const FieldChoice& fields);

    void beginFile(const DumpFile& file) override { mFile = file; }
    void add(const Record& record) override;
    void endSession(const SessionSummary& session) override;
    void endFile(const DumpEnd& end) override;
    bool finish() override;
    bool isDone() const override { return mDatabase.hasFailed(); }

private:
    void addElements(const ArrayField& array, sqlite3_stmt* insert, const Record& record);
    void bindKeys(sqlite3_stmt* insert, const Record& record) const;

    const FieldChoice mFields;
    DumpFile mFile;
    Database mDatabase;
    Database::Statement mInsertFile;
    Database::Statement mInsertSession;
    Database::Statement mInsertFrame;
    std::vector<Database::Statement> mInsertElement;  // one per array, null for one not wanted
};

}  // namespace vdrdump
