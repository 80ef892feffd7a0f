#include "demo/Options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace demo {
namespace {

constexpr int kWrongUsage = 2;
// A loss in the middle, and the 30 frames after it for which its text file waits.
constexpr uint32_t kFewestFrames = 62;
constexpr uint32_t kMostFrames = 1000000;  // nine hours of preview, 4 GB

const std::map<std::string, Cause> kCauses = {{"stuck-node", Cause::kStuckNode},
                                              {"slow-allocation", Cause::kSlowAllocation},
                                              {"thermal", Cause::kThermal},
                                              {"none", Cause::kNone}};

// Without a folder the dumps would go where a device has them.
std::string isGiven(const std::string& root) {
    return root.empty() ? "expected a folder" : "";
}

constexpr char kMore[] = R"(
Causes, which hit the frame in the middle of the session:
  stuck-node       one node holds it for ten frame times and gives up; it never
                   reaches the nodes behind, and is completed all the same
  slow-allocation  one node waits ten frame times for a buffer
  thermal          the device grows hot, and all nodes slow down until a frame is late
  none             no frame is lost

Below DIR lie the dump files (data/vendor/...), the recorder's log (logcat.txt), and
what the recorder samples: links to this machine's /proc and /sys, unless a proc or
sys is there already.

Exit status: 0 played, 1 could not be played, 2 wrong usage.)";

}  // namespace

bool Options::parse(int argc, const char* const* argv, int& status) {
    CLI::App app(
            "Plays a camera session against the video data recorder, and says what it wrote and "
            "where.",
            "vdr_demo");
    app.add_option_function<std::string>(
               "--cause", [this](const std::string& name) { cause = kCauses.at(name); },
               "Why a frame is lost (see below)")
            ->type_name("CAUSE")
            ->default_str("stuck-node")
            ->check(CLI::IsMember(kCauses).description(""));
    app.add_option("--frames", frames, "Frames to play, from 62 on")
            ->type_name("N")
            ->capture_default_str()
            ->check(CLI::Range(kFewestFrames, kMostFrames).description(""));
    app.add_option("--level", level, "Record level, 1 or 2")
            ->type_name("N")
            ->capture_default_str()
            ->check(CLI::Range(1, 2).description(""));
    app.add_flag("--realtime", realtime, "30 frames a second, not as fast as possible");
    app.add_flag("--steady", steady,
                 "Invented device status, not this machine's:\n"
                 "the same options then write the same bytes");
    app.add_option("--seed", seed, "Of the small differences from frame to frame")
            ->type_name("N")
            ->capture_default_str();
    app.add_option("--root", root, "Folder that stands for the device's file tree")
            ->type_name("DIR")
            ->capture_default_str()
            ->check(isGiven);
    app.add_option("--library", library, "Recorder library to load")
            ->type_name("PATH")
            ->default_str("the one built with the demo");
    app.footer(kMore);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? 0 : kWrongUsage;
        return false;
    }
    return true;
}

}  // namespace demo
