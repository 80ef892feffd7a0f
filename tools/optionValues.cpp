#include "tools/optionValues.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "tools/output/printablePath.h"
#include "tools/plot/Panel.h"
#include "tools/record/ChosenValue.h"
#include "tools/record/nearestName.h"

namespace vdrdump {
namespace {

using Command = CommandLine::Command;

bool parseNumber(const std::string& text, uint32_t& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
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

// --field takes all that follows it, and so may have taken the dump as well.
bool takeAsFile(CommandLine& line, const std::string& name) {
    struct stat status {};
    if (line.command == Command::Fields || !line.files.empty() ||
        !statusOf(name, STDIN_FILENO, status)) {
        return false;
    }
    line.files.push_back(name);
    return true;
}

void checkFields(CommandLine& line) {
    const char* const option = line.command == Command::Fields ? "NAME"
                               : line.isTable                  ? "--table"
                                                               : "--field";
    for (const std::string& name : line.fieldNames) {
        if (name.empty() || name.rfind("--", 0) == 0) {
            throw CLI::ValidationError(
                    option,
                    "expected a name, found " + (name.empty() ? "none" : printablePath(name)));
        }
        if (!line.fields.add(name) && !takeAsFile(line, name)) {
            throw CLI::ValidationError(option, printablePath(name) + " is no field" +
                                                       suggestion(name, FieldChoice::names()) +
                                                       " (vdrdump fields lists them)");
        }
    }
    if (line.isTable && line.fields.isAll()) {
        throw CLI::RequiredError("--table: at least one FIELD");
    }
    if (const std::string name = arrayAsAWhole(line.fields); line.isTable && !name.empty()) {
        throw CLI::ValidationError(
                "--table", name + " has many values in a record; one of them is " + name + "[0]");
    }
    if (const std::string name = fieldWithoutCurve(line.fields);
        line.command == Command::Plot && !name.empty()) {
        throw CLI::ValidationError("--field", name + " has no curve: expected numbers, each "
                                                     "one in a record");
    }
}

void checkOutput(const CommandLine& line) {
    if (line.command == Command::Plot && !endsWith(line.output, ".svg") &&
        !endsWith(line.output, ".png")) {
        throw CLI::ValidationError("-o", "expected a name that ends in .svg or .png, found " +
                                                 printablePath(line.output));
    }
    if (line.command == Command::Export && line.format == CommandLine::Format::Sqlite &&
        line.output == "-") {
        throw CLI::ValidationError("-o", "a database needs a file name");
    }
    const bool isTrace =
            line.command == Command::Export && line.format == CommandLine::Format::Trace;
    if (isTrace && !line.fieldNames.empty()) {
        throw CLI::ValidationError("--field", "a trace has no fields to choose");
    }
    if (line.command == Command::Export && !isTrace && !line.names.empty()) {
        throw CLI::ValidationError("--names", "only a trace has names of nodes");
    }
    // A dump that is gone because it was also named as the output is gone for good.
    for (const std::string& file : line.files) {
        if (isSameFile(file, line.output)) {
            throw CLI::ValidationError(
                    "-o", "the output is one of the dumps to read: " + printablePath(file));
        }
    }
}

// The place of `text` among `names`.
size_t placeOf(const char* option, const std::string& text, const std::vector<std::string>& names) {
    const auto found = std::find(names.begin(), names.end(), text);
    if (found != names.end()) {
        return static_cast<size_t>(found - names.begin());
    }
    std::string expected;
    for (size_t i = 0; i < names.size(); ++i) {
        expected += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    }
    throw CLI::ValidationError(option, "expected " + expected + ", found " + printablePath(text) +
                                               suggestion(text, names));
}

}  // namespace

uint32_t frameOf(const std::string& option, const std::string& text) {
    uint32_t number = 0;
    if (!parseNumber(text, number)) {
        throw CLI::ValidationError(option, "expected a number, found " + printablePath(text));
    }
    return number;
}

FrameRange framesOf(const std::string& text) {
    const size_t colon = text.find(':');
    FrameRange range{0, UINT32_MAX};
    const std::string first = text.substr(0, colon);
    const std::string last = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (colon == std::string::npos || (!first.empty() && !parseNumber(first, range.first)) ||
        (!last.empty() && !parseNumber(last, range.last)) || range.first > range.last) {
        throw CLI::ValidationError("--frames", "expected A:B, two frame numbers in order, found " +
                                                       printablePath(text));
    }
    return range;
}

FrameRange aroundOf(const std::string& text) {
    const size_t colon = text.find(':');
    uint32_t frame = 0;
    uint32_t count = Selection::kAround;
    if (!parseNumber(text.substr(0, colon), frame) ||
        (colon != std::string::npos && !parseNumber(text.substr(colon + 1), count))) {
        throw CLI::ValidationError("--around",
                                   "expected N or N:K, a frame number and how many on either "
                                   "side, found " +
                                           printablePath(text));
    }
    return Selection::around(frame, count);
}

uint32_t sessionOf(const std::string& text) {
    const uint32_t session = frameOf("--session", text);
    if (session == 0) {
        throw CLI::ValidationError("--session", "sessions count from 1");
    }
    return session;
}

CommandLine::Format formatOf(const std::string& text) {
    return static_cast<CommandLine::Format>(
            placeOf("--format", text, {"csv", "ndjson", "sqlite", "trace"}));
}

Engine engineOf(const std::string& text) {
    return static_cast<Engine>(
            placeOf("--engine", text, {"duckdb", "clickhouse", "spark", "sqlite"}));
}

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string nearest = nearestName(word, candidates);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

void checkUsage(CommandLine& line) {
    checkFields(line);
    if (line.command == Command::Fields || line.command == Command::Schema) {
        return;
    }
    if (line.files.empty()) {
        if (isatty(STDIN_FILENO) == 1) {
            throw CLI::RequiredError("FILE, or a dump on standard input");
        }
        line.files.emplace_back("-");
    }
    checkOutput(line);
}

}  // namespace vdrdump
