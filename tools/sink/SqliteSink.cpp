#include "tools/sink/SqliteSink.h"

#include <cmath>
#include <iterator>

#include "tools/record/ColumnText.h"
#include "tools/schema/databaseSchema.h"

namespace vdrdump {
namespace {

void bindText(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
}

void bindNumber(sqlite3_stmt* statement, int index, uint64_t number) {
    if (number <= INT64_MAX) {
        sqlite3_bind_int64(statement, index, static_cast<int64_t>(number));
    } else {
        bindText(statement, index, std::to_string(number));
    }
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
        case Kind::U64:
            bindNumber(statement, index, valueAt<uint64_t>(at));
            return;
        default:
            sqlite3_bind_int64(statement, index, integerAt(column.kind, at));
    }
}

}  // namespace

SqliteSink::SqliteSink(const std::string& path, const FieldChoice& fields)
      : mFields(fields), mDatabase(path) {
    mDatabase.execute(databaseTables(fields));
    mInsertFile = mDatabase.prepareInsert("files", 7);
    mInsertSession = mDatabase.prepareInsert("sessions", 9);
    size_t columns = kFrameKeys;
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const ArrayField* array = kItems[i].array;
        columns += array == nullptr && fields.wants(i) ? 1 : 0;
        if (array != nullptr) {
            mInsertElement.push_back(
                    fields.wants(i) ? mDatabase.prepareInsert(array->name,
                                                              kElementKeys + array->columnCount)
                                    : nullptr);
        }
    }
    mInsertFrame = mDatabase.prepareInsert("frames", columns);
}

void SqliteSink::bindKeys(sqlite3_stmt* insert, const Record& record) const {
    sqlite3_bind_int64(insert, 1, mFile.number);
    sqlite3_bind_int64(insert, 2, record.session);
    bindNumber(insert, 3, record.index);
}

void SqliteSink::add(const Record& record) {
    if (mDatabase.hasFailed()) {
        return;
    }
    bindKeys(mInsertFrame.get(), record);
    int index = kFrameKeys;
    size_t arrays = 0;
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (item.array != nullptr) {
            sqlite3_stmt* const insertElement = mInsertElement[arrays++].get();
            if (insertElement != nullptr) {
                addElements(*item.array, insertElement, record);
            }
            continue;
        }
        if (!mFields.wants(i)) {
            continue;
        }
        ++index;
        if (record.knows(item.column)) {
            bindColumn(mInsertFrame.get(), index, item.column, record.bytes + item.column.offset);
        }
    }
    mDatabase.insert(mInsertFrame.get());
}

void SqliteSink::addElements(const ArrayField& array, sqlite3_stmt* insert, const Record& record) {
    const size_t count = record.elements(array);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t columns = mFields.columnsOf(array, i);
        if (columns == 0) {
            continue;
        }
        const uint8_t* at = record.bytes + array.offset + i * array.elementSize;
        bindKeys(insert, record);
        if (!record.isMisnumbered) {
            sqlite3_bind_int64(insert, 4, record.frame());
        }
        bindNumber(insert, 5, i);
        for (int column = 0; column < array.columnCount; ++column) {
            if ((columns >> column & 1) != 0) {
                const Column& each = array.columns[column];
                bindColumn(insert, kElementKeys + 1 + column, each, at + each.offset);
            }
        }
        mDatabase.insert(insert);
    }
}

void SqliteSink::endSession(const SessionSummary& session) {
    if (mDatabase.hasFailed()) {
        return;
    }
    sqlite3_stmt* statement = mInsertSession.get();
    const uint64_t values[] = {mFile.number,     session.number, session.records,
                               session.first,    session.last,   session.missing,
                               session.repeated, session.late,   session.misnumbered};
    int index = 0;
    for (const uint64_t value : values) {
        bindNumber(statement, ++index, value);
    }
    if (session.numbered == 0) {
        sqlite3_bind_null(statement, 4);
        sqlite3_bind_null(statement, 5);
    }
    mDatabase.insert(statement);
}

void SqliteSink::endFile(const DumpEnd& end) {
    if (mDatabase.hasFailed()) {
        return;
    }
    sqlite3_stmt* statement = mInsertFile.get();
    bindNumber(statement, 1, mFile.number);
    bindText(statement, 2, mFile.path);
    bindText(statement, 3, nameOf(mFile.kind));
    if (!mFile.time.empty()) {
        bindText(statement, 4, mFile.time);
    }
    if (end.losses.announced()) {
        bindNumber(statement, 5, *end.losses.announced());
    }
    bindNumber(statement, 6, end.records);
    bindNumber(statement, 7, end.damage.any() ? 1 : 0);
    mDatabase.insert(statement);
}

bool SqliteSink::finish() {
    mInsertFile.reset();
    mInsertSession.reset();
    mInsertFrame.reset();
    mInsertElement.clear();
    mDatabase.execute(databaseViews(mFields));
    return mDatabase.finish();
}

}  // namespace vdrdump
