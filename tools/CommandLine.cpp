#include "tools/CommandLine.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "tools/optionValues.h"
#include "tools/output/Output.h"
#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

constexpr int kWrongUsage = 2;

constexpr char kExamples[] = R"(
What is in this dump, and is it whole?
  vdrdump info VIDEO_DEBUG_20240301_120000.bin
Why was frame 1234 lost?
  vdrdump explain VIDEO_DEBUG_20240301_120130_00001234.txt
Can I attach that to a bug, with pictures?
  vdrdump report VIDEO_DEBUG_20240301_120130_00001234.txt -o loss.html
What led up to its loss?
  vdrdump show VIDEO_DEBUG_20240301_120130_00001234.txt --frames 1205:1234
How warm was it around it, and how far was the camera zoomed in, line by line?
  vdrdump show DUMP --around 1234 --table zoomRatio sysStatusInfo_shellFrontTemp
Which fields are there?
  vdrdump fields
Can I see at a glance what happened around it, or in the whole session?
  vdrdump plot VIDEO_DEBUG_20240301_120130_00001234.txt -o loss.svg
  vdrdump plot DUMP -o session.svg
Can I ask questions in SQL?
  vdrdump export *.bin *.txt --format sqlite -o dumps.db
  sqlite3 dumps.db 'SELECT path, lostFrame FROM losses'
How do many dumps get into a data lake?
  vdrdump schema --engine duckdb
  vdrdump export *.bin *.txt --format csv -o dumps.csv

A FILE is a binary dump (.bin) or a frame-loss text (.txt), told apart by what is in it;
"-" or no FILE is standard input. Exit status: 0 all was read, 1 something was damaged or
missing (what could be read is still given), 2 wrong usage. More: man vdrdump)";

using Text = const std::string&;
using Command = CommandLine::Command;

CLI::App& addCommand(CLI::App& app, CommandLine& line, Command command, const char* name,
                     const char* purpose) {
    CLI::App* added = app.add_subcommand(name, purpose);
    added->callback([&line, command] { line.command = command; });
    return *added;
}

void addFiles(CLI::App& command, CommandLine& line) {
    command.add_option("FILE", line.files, "Dumps; none or - is standard input");
}

void addFile(CLI::App& command, CommandLine& line) {
    command.add_option("FILE", line.files, "A dump; none or - is standard input")->expected(0, 1);
}

void addLost(CLI::App& command, CommandLine& line, const char* meaning) {
    command.add_option_function<std::string>(
                   "--lost", [&line](Text text) { line.selection.lost = frameOf("--lost", text); },
                   meaning)
            ->type_name("N");
}

void addFrames(CLI::App& command, Selection& selection) {
    CLI::Option* one = command.add_option_function<std::string>(
            "--frame",
            [&selection](Text text) {
                const uint32_t frame = frameOf("--frame", text);
                selection.frames = FrameRange{frame, frame};
            },
            "Only frame N");
    CLI::Option* range = command.add_option_function<std::string>(
            "--frames", [&selection](Text text) { selection.frames = framesOf(text); },
            "Only frames A to B; either may be left out");
    CLI::Option* around = command.add_option_function<std::string>(
            "--around", [&selection](Text text) { selection.frames = aroundOf(text); },
            "Only frame N and K on either side (30 where K is left out)");
    one->type_name("N");
    range->type_name("A:B")->excludes(one);
    around->type_name("N[:K]")->excludes(one)->excludes(range);
}

void addSession(CLI::App& command, Selection& selection) {
    command.add_option_function<std::string>(
                   "--session", [&selection](Text text) { selection.session = sessionOf(text); },
                   "Only camera session N of each file, from 1")
            ->type_name("N");
}

// The same for every command that gives records.
void addSelection(CLI::App& command, CommandLine& line) {
    addFrames(command, line.selection);
    addLost(command, line,
            "Frame N was lost, whatever FILE is called; without --frame, --frames and --around "
            "only frames N-30 to N+30");
    addSession(command, line.selection);
    command.add_option("--field", line.fieldNames,
                       "Only these: a field, a column, or a part of an array, such as "
                       "nodeInfo.stamps_2 or nodeInfo[3]")
            ->type_name("NAME")
            ->expected(1, -1);
}

void addInfo(CLI::App& app, CommandLine& line) {
    CLI::App& info = addCommand(app, line, Command::Info, "info",
                                "What a dump holds and whether it is whole");
    addFiles(info, line);
    addLost(info, line, "Frame N was lost, whatever FILE is called");
    info.add_flag("--json", line.isJson, "The same as JSON");
}

void addOutput(CLI::App& command, CommandLine& line) {
    command.add_option("-o", line.output, "Where to; standard output when left out")
            ->type_name("OUT");
}

CLI::Option* addNames(CLI::App& command, CommandLine& line) {
    return command
            .add_option("--names", line.names,
                        "What to call the nodes: a line each, such as 0x2:0xca:0x0 scaler")
            ->type_name("NAMES");
}

void addLog(CLI::App& command, CommandLine& line) {
    command.add_option("--log", line.log, "Take losses from what the recorder logged, too")
            ->type_name("LOGCAT");
}

void addExplain(CLI::App& app, CommandLine& line) {
    CLI::App& explain = addCommand(app, line, Command::Explain, "explain",
                                   "Why frames were lost: what stands out around each loss");
    addFiles(explain, line);
    addLost(explain, line, "Explain the loss of frame N only, whether the dumps tell of it or not");
    addLog(explain, line);
    addNames(explain, line);
    explain.add_flag("--json", line.isJson, "The same as JSON");
}

void addReport(CLI::App& app, CommandLine& line) {
    CLI::App& report = addCommand(app, line, Command::Report, "report",
                                  "A page on losses for a bug: why, pictures, records");
    addFiles(report, line);
    addOutput(report, line);
    addLost(report, line, "The loss of frame N only, whether the dumps tell of it or not");
    addLog(report, line);
    addNames(report, line);
    addFrames(report, line.selection);
    addSession(report, line.selection);
}

void addShow(CLI::App& app, CommandLine& line) {
    CLI::App& show = addCommand(app, line, Command::Show, "show",
                                "Records in words, a line per field or per record");
    addFile(show, line);
    addSelection(show, line);
    CLI::Option* fields = show.get_option("--field");
    show.add_option_function<std::vector<std::string>>(
                "--table",
                [&line](const std::vector<std::string>& names) {
                    line.isTable = true;
                    line.fieldNames = names;
                },
                "A line per record with these, and how they differ from the record before")
            ->type_name("FIELD")
            ->expected(1, -1)
            ->excludes(fields)
            ->excludes(addNames(show, line));
}

void addExport(CLI::App& app, CommandLine& line) {
    CLI::App& command =
            addCommand(app, line, Command::Export, "export", "Frames as tables for other programs");
    addFiles(command, line);
    command.add_option_function<std::string>(
                   "--format", [&line](Text text) { line.format = formatOf(text); },
                   "csv, ndjson, sqlite, or trace for a trace viewer")
            ->type_name("FORMAT")
            ->required();
    addOutput(command, line);
    addNames(command, line);
    addSelection(command, line);
}

void addPlot(CLI::App& app, CommandLine& line) {
    CLI::App& plot = addCommand(app, line, Command::Plot, "plot",
                                "A picture of a camera session, with what led to a loss");
    addFile(plot, line);
    plot.add_option("-o", line.output, "Where to: a name that ends in .svg or .png")
            ->type_name("OUT")
            ->required();
    addNames(plot, line);
    addSelection(plot, line);
}

void addFields(CLI::App& app, CommandLine& line) {
    CLI::App& fields = addCommand(app, line, Command::Fields, "fields",
                                  "What a record holds: names, types, units, meanings");
    CLI::Option* named = fields.add_option("NAME", line.fieldNames, "Only these")->type_name("");
    fields.add_flag("--names", line.namesOnly, "All names, a line each, and nothing else")
            ->excludes(named);
}

void addSchema(CLI::App& app, CommandLine& line) {
    CLI::App& schema = addCommand(app, line, Command::Schema, "schema",
                                  "The tables of an export, declared with all types");
    schema.add_option_function<std::string>(
                  "--engine", [&line](Text text) { line.engine = engineOf(text); },
                  "duckdb, clickhouse, spark or sqlite")
            ->type_name("ENGINE")
            ->required();
}

// An argument that nothing takes, and the one that comes nearest to it.
std::string unexpected(const CLI::App& app, const std::string& word) {
    std::vector<std::string> candidates;
    const auto chosen = app.get_subcommands();
    const CLI::App& command = chosen.empty() ? app : *chosen.front();
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            candidates.push_back("--" + name);
        }
    }
    for (const CLI::App* each : command.get_subcommands(nullptr)) {
        candidates.push_back(each->get_name());
    }
    const std::string name = word.substr(0, word.find('='));
    return printablePath(word) + " is not expected" +
           (chosen.empty() ? "" : " by " + command.get_name()) + suggestion(name, candidates);
}

// Says what is wrong, or gives the help that was asked for.
int answer(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv) {
    if (error.get_exit_code() == 0) {
        std::ostringstream text;  // what was asked for: help, version
        app.exit(error, text);
        Output output("-");
        output.append(text.str());
        return output.finish() ? 0 : 1;
    }
    std::string word = app.get_subcommands().empty() && argc > 1 ? argv[1] : "";
    if (const auto remaining = app.remaining(true); word.empty() && !remaining.empty()) {
        word = remaining.front();
    }
    if (word.empty()) {
        app.exit(error);
    } else {
        app.exit(CLI::ValidationError(unexpected(app, word)));
    }
    return kWrongUsage;
}

}  // namespace

bool CommandLine::parse(int argc, const char* const* argv, int& status) {
    words.assign(argv, argv + argc);
    CLI::App app(
            "Reads the dumps of the video data recorder: what is in them, why frames "
            "were lost, single frames, tables for queries, pictures and pages.",
            "vdrdump");
    app.set_version_flag("--version", std::string("vdrdump ") + VDRDUMP_VERSION);
    app.require_subcommand(1);
    addInfo(app, *this);
    addExplain(app, *this);
    addReport(app, *this);
    addShow(app, *this);
    addExport(app, *this);
    addPlot(app, *this);
    addFields(app, *this);
    addSchema(app, *this);
    app.footer(kExamples);  // last: subcommands would take it over
    try {
        app.parse(argc, argv);
        checkUsage(*this);
    } catch (const CLI::ParseError& error) {
        status = answer(app, error, argc, argv);
        return false;
    }
    return true;
}

}  // namespace vdrdump
