#include "tools/schema/printSchema.h"

#include "tools/output/Output.h"
#include "tools/schema/clickhouseSchema.h"
#include "tools/schema/databaseSchema.h"
#include "tools/schema/duckdbSchema.h"
#include "tools/schema/sparkSchema.h"

namespace vdrdump {
namespace {

std::string schemaOf(Engine engine) {
    switch (engine) {
        case Engine::DuckDb:
            return duckdbSchema();
        case Engine::ClickHouse:
            return clickhouseSchema();
        case Engine::Spark:
            return sparkSchema();
        case Engine::Sqlite:
            break;
    }
    const FieldChoice all;
    return databaseTables(all) + databaseViews(all);
}

}  // namespace

bool printSchema(Engine engine) {
    Output output("-");
    output.append(schemaOf(engine));
    return output.finish();
}

}  // namespace vdrdump
