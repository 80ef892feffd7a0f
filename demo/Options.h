#pragma once

#include <cstdint>
#include <string>

namespace demo {

// Why a frame is lost.
enum class Cause { kNone, kStuckNode, kSlowAllocation, kThermal };

// What the command line asks for.
struct Options {
    // False when there is nothing to play, after the help or a message; `status` is then what the
    // process ends with.
    bool parse(int argc, const char* const* argv, int& status);

    Cause cause = Cause::kStuckNode;
    uint32_t frames = 300;
    uint32_t level = 1;
    uint32_t seed = 1;
    bool realtime = false;
    bool steady = false;
    std::string root = "out/demo";
    std::string library = VDR_DEMO_LIBRARY;
};

}  // namespace demo
