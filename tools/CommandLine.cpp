#include "tools/CommandLine.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>

namespace vdrdump {
namespace {

constexpr int kWrongUsage = 2;

constexpr char kExamples[] = R"(
What is in this dump, and is it whole?
  vdrdump info VIDEO_DEBUG_20240301_120000.bin
What led up to the loss of frame 1234?
  vdrdump show VIDEO_DEBUG_20240301_120130_00001234.txt --frames 1205:1234
How warm was it, and how far was the camera zoomed in?
  vdrdump show DUMP --frame 1234 --field sysStatusInfo --field zoomRatio
Can I see the whole session at a glance?
  vdrdump plot DUMP -o session.svg
Can I ask questions in SQL?
  vdrdump export *.bin *.txt --format sqlite -o dumps.db
  sqlite3 dumps.db 'SELECT path, lostFrame FROM losses'
How do many dumps get into a data lake?
  vdrdump export *.bin *.txt --format csv | zstd > dumps.csv.zst

A FILE is a binary dump (.bin) or a frame-loss text (.txt), told apart by what is in it;
"-" or no FILE is standard input. Exit status: 0 all was read, 1 something was damaged or
missing (what could be read is still given), 2 wrong usage. More: man vdrdump)";

bool parseNumber(const std::string& text, uint32_t& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

// "A:B", where either may be left out.
FrameRange parseFrames(const std::string& text) {
    const size_t colon = text.find(':');
    FrameRange range{0, UINT32_MAX};
    const std::string first = text.substr(0, colon);
    const std::string last = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (colon == std::string::npos || (!first.empty() && !parseNumber(first, range.first)) ||
        (!last.empty() && !parseNumber(last, range.last)) || range.first > range.last) {
        throw CLI::ValidationError("--frames",
                                   "expected A:B, two frame numbers in order, found " + text);
    }
    return range;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

uint32_t numberOf(const std::string& option, const std::string& text) {
    uint32_t number = 0;
    if (!parseNumber(text, number)) {
        throw CLI::ValidationError(option, "expected a number, found " + text);
    }
    return number;
}

uint32_t sessionOf(const std::string& text) {
    const uint32_t session = numberOf("--session", text);
    if (session == 0) {
        throw CLI::ValidationError("--session", "sessions count from 1");
    }
    return session;
}

// False for what has no status; `stream` is what "-" stands for.
bool statusOf(const std::string& path, int stream, struct stat& status) {
    return (path == "-" ? fstat(stream, &status) : stat(path.c_str(), &status)) == 0;
}

bool isSameFile(const std::string& dump, const std::string& output) {
    struct stat first {};
    struct stat second {};
    return statusOf(dump, STDIN_FILENO, first) && statusOf(output, STDOUT_FILENO, second) &&
           S_ISREG(first.st_mode) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// A dump that is gone because it was also named as the output is gone for good.
void checkOutput(const CommandLine& line) {
    for (const std::string& file : line.files) {
        if (isSameFile(file, line.output)) {
            throw CLI::ValidationError("-o", "the output is one of the dumps to read: " + file);
        }
    }
}

void check(CommandLine& line) {
    if (line.files.empty()) {
        if (isatty(STDIN_FILENO) == 1) {
            throw CLI::RequiredError("FILE, or a dump on standard input");
        }
        line.files.emplace_back("-");
    }
    if (const std::string name = ShowSink::unknownField(line.choice.fields); !name.empty()) {
        throw CLI::ValidationError("--field", name + " is no field; the names are the header of "
                                                     "vdrdump export --format csv, and FILE stands "
                                                     "before --field");
    }
    if (line.command == CommandLine::Command::Plot && !endsWith(line.output, ".svg") &&
        !endsWith(line.output, ".png")) {
        throw CLI::ValidationError(
                "-o", "expected a name that ends in .svg or .png, found " + line.output);
    }
    if (line.command == CommandLine::Command::Export &&
        line.format == CommandLine::Format::Sqlite && line.output == "-") {
        throw CLI::ValidationError("-o", "a database needs a file name");
    }
    checkOutput(line);
}

CLI::App& addCommand(CLI::App& app, CommandLine& line, CommandLine::Command command,
                     const char* name, const char* purpose) {
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

void addShow(CLI::App& app, CommandLine& line) {
    CLI::App& show = addCommand(app, line, CommandLine::Command::Show, "show",
                                "Records in words, a line per field");
    addFile(show, line);
    CLI::Option* one = show.add_option_function<std::string>(
                                   "--frame",
                                   [&line](const std::string& text) {
                                       const uint32_t frame = numberOf("--frame", text);
                                       line.choice.frames = {frame, frame};
                                   },
                                   "Only frame N")
                               ->type_name("N");
    show.add_option_function<std::string>(
                "--frames",
                [&line](const std::string& text) { line.choice.frames = parseFrames(text); },
                "Only frames A to B; either may be left out")
            ->type_name("A:B")
            ->excludes(one);
    show.add_option("--field", line.choice.fields, "Only these; may be given several times")
            ->type_name("NAME")
            ->expected(1, -1);
    show.add_option_function<std::string>(
                "--session",
                [&line](const std::string& text) { line.choice.session = sessionOf(text); },
                "Only camera session N of the file, from 1")
            ->type_name("N");
}

void addExport(CLI::App& app, CommandLine& line) {
    static const std::map<std::string, CommandLine::Format> formats = {
            {"csv", CommandLine::Format::Csv},
            {"ndjson", CommandLine::Format::Ndjson},
            {"sqlite", CommandLine::Format::Sqlite}};
    CLI::App& command = addCommand(app, line, CommandLine::Command::Export, "export",
                                   "All frames as tables for other programs");
    addFiles(command, line);
    command.add_option_function<std::string>(
                   "--format", [&line](const std::string& text) { line.format = formats.at(text); },
                   "csv, ndjson or sqlite")
            ->type_name("FORMAT")
            ->required()
            ->check(CLI::IsMember({"csv", "ndjson", "sqlite"}).description(""));
    command.add_option("-o", line.output, "Where to; standard output when left out")
            ->type_name("OUT");
}

void addPlot(CLI::App& app, CommandLine& line) {
    CLI::App& plot = addCommand(app, line, CommandLine::Command::Plot, "plot",
                                "A picture of a camera session");
    addFile(plot, line);
    plot.add_option("-o", line.output, "Where to: a name that ends in .svg or .png")
            ->type_name("OUT")
            ->required();
    plot.add_option_function<std::string>(
                "--session", [&line](const std::string& text) { line.session = sessionOf(text); },
                "Camera session of the file, from 1")
            ->type_name("N")
            ->default_str("1");
}

}  // namespace

bool CommandLine::parse(int argc, const char* const* argv, int& status) {
    CLI::App app(
            "Reads the dumps of the video data recorder: what is in them, single frames, "
            "tables for queries, and a picture.",
            "vdrdump");
    app.set_version_flag("--version", std::string("vdrdump ") + VDRDUMP_VERSION);
    app.require_subcommand(1);
    addFiles(addCommand(app, *this, Command::Info, "info",
                        "What a dump holds and whether it is whole"),
             *this);
    addShow(app, *this);
    addExport(app, *this);
    addPlot(app, *this);
    app.footer(kExamples);  // last: subcommands would take it over
    try {
        app.parse(argc, argv);
        check(*this);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? 0 : kWrongUsage;
        return false;
    }
    return true;
}

}  // namespace vdrdump
