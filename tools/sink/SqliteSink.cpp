#include "tools/sink/SqliteSink.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

// 64-bit columns have no type: what exceeds SQLite's signed integers is stored as text, which a
// type of INTEGER would turn into a rounded number.
const char* typeOf(Kind kind) {
    switch (kind) {
        case Kind::Text:
            return " TEXT";
        case Kind::F32:
            return " REAL";
        case Kind::U64:
            return "";
        default:
            return " INTEGER";
    }
}

std::string placeholders(size_t count) {
    std::string result = " VALUES (?";
    for (size_t i = 1; i < count; ++i) {
        result += ",?";
    }
    return result + ")";
}

constexpr size_t kFrameKeys = 3;    // file, session, record
constexpr size_t kElementKeys = 5;  // those, frameNumber and element

void bindText(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
}

void bindColumn(sqlite3_stmt* statement, int index, const Column& column, const uint8_t* at) {
    switch (column.kind) {
        case Kind::Text:
            bindText(statement, index, nameAt(column, at));
            return;
        case Kind::F32:
            if (std::isfinite(valueAt<float>(at))) {
                sqlite3_bind_double(statement, index, printedFloat(at));
            }
            return;
        case Kind::U64: {
            const auto value = valueAt<uint64_t>(at);
            if (value <= INT64_MAX) {
                sqlite3_bind_int64(statement, index, static_cast<int64_t>(value));
            } else {
                bindText(statement, index, std::to_string(value));
            }
            return;
        }
        default:
            sqlite3_bind_int64(statement, index, integerAt(column.kind, at));
    }
}

// What a link leads to, so that the link stays.
std::string targetOf(const std::string& path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

const char* nameOf(DumpKind kind) {
    switch (kind) {
        case DumpKind::Binary:
            return "binary";
        case DumpKind::Text:
            return "text";
        case DumpKind::Empty:
            break;
    }
    return "empty";
}

}  // namespace

SqliteSink::SqliteSink(const std::string& path)
      : mPath(targetOf(path)), mUnfinishedPath(mPath + ".unfinished") {
    if (std::filesystem::exists(mPath) && !std::filesystem::is_regular_file(mPath)) {
        mHasFailed = true;
        std::fprintf(stderr, "vdrdump: %s: expected a file to replace\n", mPath.c_str());
        return;
    }
    unlink(mUnfinishedPath.c_str());
    if (sqlite3_open(mUnfinishedPath.c_str(), &mDatabase) != SQLITE_OK) {
        fail();
        return;
    }
    // Nothing is lost with an unfinished database, so it needs neither journal nor flushes.
    execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE;"
            "BEGIN");
    createTables();
}

SqliteSink::~SqliteSink() {
    mInsertFile.reset();
    mInsertSession.reset();
    mInsertFrame.reset();
    mInsertElement.clear();
    sqlite3_close(mDatabase);
    unlink(mUnfinishedPath.c_str());  // gone already when it was finished
}

void SqliteSink::createTables() {
    execute("CREATE TABLE files (file INTEGER PRIMARY KEY, path TEXT, kind TEXT,"
            " lostFrame INTEGER, records INTEGER, isDamaged INTEGER);"
            "CREATE VIEW losses AS SELECT file, path, lostFrame FROM files"
            " WHERE lostFrame IS NOT NULL;"
            "CREATE TABLE sessions (file INTEGER, session INTEGER, records INTEGER,"
            " firstFrame INTEGER, lastFrame INTEGER, missing INTEGER, repeated INTEGER,"
            " late INTEGER, PRIMARY KEY (file, session))");
    mInsertFile = prepare("INSERT INTO files" + placeholders(6));
    mInsertSession = prepare("INSERT INTO sessions" + placeholders(8));

    std::string frames = "CREATE TABLE frames (file INTEGER, session INTEGER, record INTEGER";
    size_t columns = kFrameKeys;
    for (const Item& item : kItems) {
        if (item.array == nullptr) {
            frames += std::string(", ") + item.column.name + typeOf(item.column.kind);
            ++columns;
        }
    }
    execute(frames + ")");
    mInsertFrame = prepare("INSERT INTO frames" + placeholders(columns));

    for (const ArrayField* array : kArrays) {
        std::string table = std::string("CREATE TABLE ") + array->name +
                            " (file INTEGER, session INTEGER, record INTEGER,"
                            " frameNumber INTEGER, element INTEGER";
        for (const Column& column : *array) {
            table += std::string(", ") + column.name + typeOf(column.kind);
        }
        execute(table + ")");
        mInsertElement.push_back(prepare(std::string("INSERT INTO ") + array->name +
                                         placeholders(kElementKeys + array->columnCount)));
    }
}

void SqliteSink::beginFile(const DumpFile& file) {
    mFile = file;
}

void SqliteSink::bindRecord(sqlite3_stmt* insert, const Record& record) const {
    sqlite3_clear_bindings(insert);
    sqlite3_bind_int64(insert, 1, mFile.number);
    sqlite3_bind_int64(insert, 2, record.session);
    sqlite3_bind_int64(insert, 3, static_cast<int64_t>(record.index));
}

void SqliteSink::add(const Record& record) {
    if (mHasFailed) {
        return;
    }
    bindRecord(mInsertFrame.get(), record);
    int index = kFrameKeys;
    for (const Item& item : kItems) {
        if (item.array != nullptr) {
            continue;
        }
        ++index;
        if (record.knows(item.column)) {
            bindColumn(mInsertFrame.get(), index, item.column, record.bytes + item.column.offset);
        }
    }
    insert(mInsertFrame.get());
    const auto frame = record.read<uint32_t>(offsetof(Layout, frameNumber));
    for (size_t i = 0; i < std::size(kArrays); ++i) {
        addElements(*kArrays[i], mInsertElement[i].get(), record, frame);
    }
}

void SqliteSink::addElements(const ArrayField& array, sqlite3_stmt* insertElement,
                             const Record& record, uint32_t frame) {
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        bindRecord(insertElement, record);
        sqlite3_bind_int64(insertElement, 4, frame);
        sqlite3_bind_int64(insertElement, 5, static_cast<int64_t>(i));
        int index = kElementKeys;
        for (const Column& column : array) {
            bindColumn(insertElement, ++index, column, at + column.offset);
        }
        insert(insertElement);
    }
}

void SqliteSink::endSession(const SessionSummary& session) {
    if (mHasFailed) {
        return;
    }
    sqlite3_stmt* statement = mInsertSession.get();
    sqlite3_clear_bindings(statement);
    const uint64_t values[] = {mFile.number, session.number,  session.records,  session.first,
                               session.last, session.missing, session.repeated, session.late};
    int index = 0;
    for (const uint64_t value : values) {
        sqlite3_bind_int64(statement, ++index, static_cast<int64_t>(value));
    }
    if (session.numbered == 0) {
        sqlite3_bind_null(statement, 4);
        sqlite3_bind_null(statement, 5);
    }
    insert(statement);
}

void SqliteSink::endFile(uint64_t records, const DamageLog& damage) {
    if (mHasFailed) {
        return;
    }
    sqlite3_stmt* statement = mInsertFile.get();
    sqlite3_clear_bindings(statement);
    sqlite3_bind_int64(statement, 1, mFile.number);
    bindText(statement, 2, mFile.path);
    bindText(statement, 3, nameOf(mFile.kind));
    if (mFile.lostFrame) {
        sqlite3_bind_int64(statement, 4, *mFile.lostFrame);
    }
    sqlite3_bind_int64(statement, 5, static_cast<int64_t>(records));
    sqlite3_bind_int64(statement, 6, damage.any() ? 1 : 0);
    insert(statement);
}

bool SqliteSink::finish() {
    execute("CREATE INDEX framesByNumber ON frames (file, session, frameNumber)");
    for (const ArrayField* array : kArrays) {
        execute(std::string("CREATE INDEX ") + array->name + "ByNumber ON " + array->name +
                " (file, session, frameNumber)");
    }
    execute("COMMIT");
    if (!mHasFailed && std::rename(mUnfinishedPath.c_str(), mPath.c_str()) != 0) {
        mHasFailed = true;
        std::fprintf(stderr, "vdrdump: %s: expected to write it: %s\n", mPath.c_str(),
                     std::strerror(errno));
    }
    return !mHasFailed;
}

void SqliteSink::execute(const std::string& sql) {
    if (!mHasFailed &&
        sqlite3_exec(mDatabase, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

SqliteSink::Statement SqliteSink::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (!mHasFailed &&
        sqlite3_prepare_v2(mDatabase, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        fail();
    }
    return Statement(statement);
}

void SqliteSink::insert(sqlite3_stmt* statement) {
    if (!mHasFailed && sqlite3_step(statement) != SQLITE_DONE) {
        fail();
    }
    sqlite3_reset(statement);
}

void SqliteSink::fail() {
    mHasFailed = true;
    std::fprintf(stderr, "vdrdump: %s: expected to write it: %s\n", mPath.c_str(),
                 sqlite3_errmsg(mDatabase));
}

}  // namespace vdrdump
