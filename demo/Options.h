#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace demo {

// What the command line asks for. After a parse that says kRun, everything in it can be played:
// frame numbers fit into 32 bits, and drops lie inside the session.
struct Options {
    enum class Parsed { kRun, kHelp, kWrong };

    // Says what is wrong on standard error.
    Parsed parse(int argc, char** argv);
    static void printHelp();

    uint32_t lastFrame() const { return firstFrame + (frames - 1); }

    std::string root = "out/demo";
    std::string library = VDR_DEMO_LIBRARY;
    uint32_t level = 1;
    uint32_t frames = 300;
    uint32_t firstFrame = 1;
    bool realtime = false;
    bool steady = false;
    std::vector<uint32_t> drops;  // ascending, each once

private:
    bool take(int option, const char* value);
    bool check();
    bool checkDrops();
};

}  // namespace demo
