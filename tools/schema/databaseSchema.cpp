#include "tools/schema/databaseSchema.h"

#include "tools/record/Record.h"

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

constexpr char kFiles[] = R"(
CREATE TABLE files (file INTEGER PRIMARY KEY, path TEXT, kind TEXT, time TEXT, lostFrame INTEGER,
    records INTEGER, isDamaged INTEGER);
CREATE TABLE sessions (file INTEGER, session INTEGER, records INTEGER, firstFrame INTEGER,
    lastFrame INTEGER, missing INTEGER, repeated INTEGER, late INTEGER, misnumbered INTEGER,
    PRIMARY KEY (file, session));
CREATE TABLE gaps (file INTEGER, session INTEGER, firstFrame INTEGER, lastFrame INTEGER,
    frames INTEGER);
)";

constexpr char kGaps[] = R"(
CREATE INDEX framesByNumber ON frames (file, session, frameNumber);
CREATE INDEX framesByFrameNumber ON frames (frameNumber);
INSERT INTO gaps
    SELECT file, session, frameNumber + 1, next - 1, next - frameNumber - 1
    FROM (SELECT file, session, frameNumber,
                 lead(frameNumber) OVER (PARTITION BY file, session ORDER BY frameNumber) AS next
          FROM frames WHERE frameNumber <> 4294967295)
    WHERE next > frameNumber + 1;
)";

// An announced loss lies in the session that covers it, or behind the last one.
constexpr char kLosses[] = R"(
CREATE VIEW losses AS
    SELECT f.file, f.path,
           ifnull((SELECT min(s.session) FROM sessions AS s WHERE s.file = f.file
                    AND f.lostFrame BETWEEN s.firstFrame AND s.lastFrame),
                  (SELECT max(s.session) FROM sessions AS s WHERE s.file = f.file)) AS session,
           f.lostFrame, f.lostFrame AS lastLostFrame, 'announced' AS source
    FROM files AS f WHERE f.lostFrame IS NOT NULL
    UNION ALL
    SELECT f.file, f.path, g.session, g.firstFrame, g.lastFrame, 'gap'
    FROM gaps AS g JOIN files AS f ON f.file = g.file
    WHERE f.lostFrame IS NULL OR f.lostFrame NOT BETWEEN g.firstFrame AND g.lastFrame;
)";

// Subtracting nothing gives nothing: a stamp of 0 was never made.
constexpr char kNodeTime[] = R"(
CREATE VIEW node_time AS
    SELECT file, session, record, frameNumber AS frame, element,
           printf('0x%x:0x%x:0x%x', ids_0, ids_1, ids_2) AS node,
           nullif(stamps_1, 0) - nullif(stamps_0, 0) AS wait,
           nullif(stamps_2, 0) - nullif(stamps_1, 0) AS run,
           nullif(stamps_3, 0) - nullif(stamps_0, 0) AS whole,
           stamps_0 <> 0 AND stamps_3 = 0 AS isStuck
    FROM nodeInfo;
)";

constexpr char kFrameTime[] = R"(
CREATE VIEW frame_time AS
    SELECT f.file, f.session, f.record, f.frameNumber AS frame,
           nullif(f.cslInfo_stamp, 0) -
               (SELECT nullif(p.cslInfo_stamp, 0) FROM frames AS p
                 WHERE p.file = f.file AND p.session = f.session AND p.frameNumber < f.frameNumber
                 ORDER BY p.frameNumber DESC LIMIT 1) AS interval,
           (SELECT CASE WHEN sum(n.stamps_0 <> 0 AND n.stamps_3 = 0) = 0
                        THEN max(nullif(n.stamps_3, 0)) - min(nullif(n.stamps_0, 0)) END
              FROM nodeInfo AS n
             WHERE n.file = f.file AND n.session = f.session AND n.frameNumber = f.frameNumber
               AND n.record = f.record) AS latency
    FROM frames AS f;
)";

bool isWantedWhole(const FieldChoice& fields, const ArrayField& array) {
    bool isWhole = true;
    for (size_t i = 0; i < array.capacity; ++i) {
        isWhole &= fields.columnsOf(array, i) == FieldChoice::allColumns(array);
    }
    return isWhole;
}

bool isWanted(const FieldChoice& fields, size_t offset) {
    for (size_t i = 0; i < std::size(kItems); ++i) {
        if (kItems[i].array == nullptr && kItems[i].column.offset == offset) {
            return fields.wants(i);
        }
    }
    return false;
}

}  // namespace

std::string databaseTables(const FieldChoice& fields) {
    std::string frames =
            "CREATE TABLE frames (\n    file INTEGER,\n    session INTEGER,\n    record INTEGER";
    std::string arrays;
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const Item& item = kItems[i];
        if (!fields.wants(i)) {
            continue;
        }
        if (item.array == nullptr) {
            frames += std::string(",\n    ") + item.column.name + typeOf(item.column.kind);
            continue;
        }
        arrays += std::string("CREATE TABLE ") + item.array->name +
                  " (file INTEGER, session INTEGER, record INTEGER, frameNumber INTEGER,\n"
                  "    element INTEGER";
        for (const Column& column : *item.array) {
            arrays += std::string(", ") + column.name + typeOf(column.kind);
        }
        arrays += ");\n";
    }
    return kFiles + frames + "\n);\n" + arrays;
}

std::string databaseViews(const FieldChoice& fields) {
    std::string sql = kGaps;
    for (size_t i = 0; i < std::size(kItems); ++i) {
        const ArrayField* array = kItems[i].array;
        if (array != nullptr && fields.wants(i)) {
            sql += std::string("CREATE INDEX ") + array->name + "ByNumber ON " + array->name +
                   " (file, session, frameNumber);\n";
        }
    }
    sql += kLosses;
    if (isWantedWhole(fields, kNodes)) {
        sql += kNodeTime;
        constexpr size_t kStamp = offsetof(Layout, cslInfo) + offsetof(vdr2::CslInfo, stamp);
        sql += isWanted(fields, kStamp) ? kFrameTime : "";
    }
    return sql;
}

}  // namespace vdrdump
