#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <memory>

#include "tools/CommandLine.h"
#include "tools/explain/explainDumps.h"
#include "tools/plot/PlotSink.h"
#include "tools/report/makeReport.h"
#include "tools/sink/CsvSink.h"
#include "tools/sink/DumpPass.h"
#include "tools/sink/InfoJsonSink.h"
#include "tools/sink/InfoSink.h"
#include "tools/sink/NdjsonSink.h"
#include "tools/sink/ShowSink.h"
#include "tools/sink/SqliteSink.h"
#include "tools/sink/TableSink.h"
#include "tools/sink/printFields.h"
#include "tools/trace/exportTrace.h"

namespace {

using vdrdump::CommandLine;

vdrdump::NodeNames namesOf(const CommandLine& line) {
    return line.names.empty() ? vdrdump::NodeNames() : vdrdump::NodeNames::fromFile(line.names);
}

std::unique_ptr<vdrdump::RecordSink> makeSink(const CommandLine& line,
                                              vdrdump::Progress& progress) {
    switch (line.command) {
        case CommandLine::Command::Info:
            if (line.isJson) {
                return std::make_unique<vdrdump::InfoJsonSink>();
            }
            return std::make_unique<vdrdump::InfoSink>(progress);
        case CommandLine::Command::Show:
            if (line.isTable) {
                return std::make_unique<vdrdump::TableSink>(line.fields);
            }
            return std::make_unique<vdrdump::ShowSink>(line.fields, namesOf(line));
        case CommandLine::Command::Plot:
            return std::make_unique<vdrdump::PlotSink>(line.output, line.selection, line.fields,
                                                       namesOf(line));
        default:
            break;
    }
    switch (line.format) {
        case CommandLine::Format::Csv:
            return std::make_unique<vdrdump::CsvSink>(line.output, line.fields);
        case CommandLine::Format::Ndjson:
            return std::make_unique<vdrdump::NdjsonSink>(line.output, line.fields);
        default:
            break;
    }
    return std::make_unique<vdrdump::SqliteSink>(line.output, line.fields);
}

bool printsWhileReading(const CommandLine& line) {
    return line.command == CommandLine::Command::Show ||
           (line.command == CommandLine::Command::Export && line.output == "-");
}

vdrdump::LossRequest lossesOf(const CommandLine& line) {
    return {line.files,
            line.selection.lost,
            line.log,
            line.selection.frames,
            line.selection.session,
            false};
}

bool run(const CommandLine& line) {
    if (line.command == CommandLine::Command::Fields) {
        return vdrdump::printFields(line.fieldNames, line.namesOnly);
    }
    if (line.command == CommandLine::Command::Schema) {
        return vdrdump::printSchema(line.engine);
    }
    if (line.command == CommandLine::Command::Explain) {
        return vdrdump::explainDumps({lossesOf(line), line.names, line.isJson});
    }
    if (line.command == CommandLine::Command::Report) {
        vdrdump::LossRequest which = lossesOf(line);
        which.explains = true;
        return vdrdump::makeReport({which, line.names, line.output, line.words});
    }
    if (line.command == CommandLine::Command::Export && line.format == CommandLine::Format::Trace) {
        return vdrdump::exportTrace({lossesOf(line), line.names, line.output});
    }
    vdrdump::Progress progress(line.files, !printsWhileReading(line) || isatty(STDOUT_FILENO) == 0);
    const std::unique_ptr<vdrdump::RecordSink> sink = makeSink(line, progress);
    vdrdump::DumpPass pass(*sink, progress, stderr);
    const bool readsAll = line.command == CommandLine::Command::Info ||
                          line.command == CommandLine::Command::Plot;
    pass.choose(readsAll ? line.selection.wholeDump() : line.selection);
    bool isWhole = true;
    for (const std::string& file : line.files) {
        isWhole &= pass.readFile(file);
    }
    progress.clear();
    return sink->finish() && isWhole;
}

// Where a standard stream is closed, the first file to be opened would take its place, and messages
// would end up in it. The place is taken by what can be neither read nor written.
void occupyStandardStreams() {
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_PATH);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    try {
        CommandLine line;
        int status = 0;
        if (!line.parse(argc, argv, status)) {
            return status;
        }
        return run(line) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vdrdump: %s\n", error.what());
        return 1;
    }
}
