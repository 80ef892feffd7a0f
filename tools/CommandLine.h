#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/sink/ShowSink.h"

namespace vdrdump {

// What the user asked for.
struct CommandLine {
    enum class Command : uint8_t { Info, Show, Export, Plot };
    enum class Format : uint8_t { Csv, Ndjson, Sqlite };

    Command command = Command::Info;
    std::vector<std::string> files;  // "-": standard input
    ShowSink::Choice choice;
    Format format = Format::Csv;
    std::string output = "-";
    uint32_t session = 1;  // to plot

    // False when there is nothing left to do: help was asked for or the usage is wrong, which has
    // been answered; `status` is then how to exit.
    bool parse(int argc, const char* const* argv, int& status);
};

}  // namespace vdrdump
