#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/record/FieldChoice.h"
#include "tools/schema/printSchema.h"
#include "tools/session/Selection.h"

namespace vdrdump {

// What the user asked for.
struct CommandLine {
    enum class Command : uint8_t { Info, Explain, Report, Show, Export, Plot, Fields, Schema };
    enum class Format : uint8_t { Csv, Ndjson, Sqlite, Trace };

    Command command = Command::Info;
    std::vector<std::string> files;  // "-": standard input
    Selection selection;
    std::vector<std::string> fieldNames;
    FieldChoice fields;
    bool isTable = false;    // show
    bool isJson = false;     // info, explain
    bool namesOnly = false;  // fields
    Format format = Format::Csv;
    Engine engine = Engine::DuckDb;  // schema
    std::string output = "-";
    std::string log;                 // explain, report
    std::string names;               // explain, report, show, export, plot
    std::vector<std::string> words;  // all of it, as it was typed

    // False when there is nothing left to do: help was asked for or the usage is wrong, which has
    // been answered; `status` is then how to exit.
    bool parse(int argc, const char* const* argv, int& status);
};

}  // namespace vdrdump
