#include "demo/Options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "records/frameData.h"

namespace demo {
namespace {

constexpr uint32_t kDefaultDrop = 150;
constexpr uint32_t kFramesAfterDrop = 30;  // frames that complete before a loss is written out
constexpr uint32_t kLastIgnoredDrop = 10;  // drops up to this frame are start-up noise
// A drop costs about 31 lines, and the recorder writes 1000 a day.
constexpr size_t kMostDrops = 30;

enum Option : int { kRoot = 1, kLevel, kFrames, kFirstFrame, kRealtime, kSteady, kDrop, kLibrary };

constexpr option kOptions[] = {
        {"root", required_argument, nullptr, kRoot},
        {"level", required_argument, nullptr, kLevel},
        {"frames", required_argument, nullptr, kFrames},
        {"first-frame", required_argument, nullptr, kFirstFrame},
        {"realtime", no_argument, nullptr, kRealtime},
        {"steady", no_argument, nullptr, kSteady},
        {"drop", required_argument, nullptr, kDrop},
        {"library", required_argument, nullptr, kLibrary},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
};

bool parseNumber(const char* text, uint32_t& number) {
    const char* end = text + std::strlen(text);
    const auto [stopped, error] = std::from_chars(text, end, number);
    return error == std::errc() && stopped == end && text != end;
}

bool refuse(const char* reason) {
    std::fprintf(stderr, "vdr_demo: %s\n", reason);
    return false;
}

}  // namespace

void Options::printHelp() {
    std::printf(
            "Usage: vdr_demo [OPTION]...\n"
            "Plays one camera session against the recorder library and checks what it leaves on "
            "disk.\n"
            "\n"
            "  --root DIR         folder that stands for the device's file tree (default "
            "out/demo);\n"
            "                     DIR/proc and DIR/sys become links to this machine's unless\n"
            "                     something is there already, the log goes to DIR/logcat.txt\n"
            "  --level 1|2        record level (default 1)\n"
            "  --frames N         number of frames (default 300)\n"
            "  --first-frame F    number of the first frame (default 1); F + N - 1 is at most\n"
            "                     4294967294\n"
            "  --realtime         30 frames a second instead of as fast as possible\n"
            "  --drop FRAME       the monitoring agency announces this frame as dropped; a frame "
            "of\n"
            "                     the session above 10, at most 30 of them (default 150, where 30\n"
            "                     further frames follow)\n"
            "  --steady           records carry an invented device status instead of the "
            "sampler's:\n"
            "                     sessions with the same options then write the same bytes, at\n"
            "                     either level. Without it they differ in that one field.\n"
            "  --library PATH     recorder library to load (default %s)\n"
            "  -h, --help         this text\n"
            "\n"
            "Beside its frames a session takes two to three seconds for the status sampler, which\n"
            "reads the machine once a second, and two more where a drop's promise stays "
            "unanswered.\n"
            "\n"
            "Exit status: 0 everything promised is on disk, 1 something is not, 2 wrong usage.\n",
            VDR_DEMO_LIBRARY);
}

Options::Parsed Options::parse(int argc, char** argv) {
    for (int option = 0; (option = getopt_long(argc, argv, "h", kOptions, nullptr)) != -1;) {
        if (option == 'h') {
            return Parsed::kHelp;
        }
        if (option == '?') {
            return Parsed::kWrong;  // getopt_long has said why
        }
        if (!take(option, optarg)) {
            return Parsed::kWrong;
        }
    }
    if (optind != argc) {
        std::fprintf(stderr, "vdr_demo: unexpected argument '%s'\n", argv[optind]);
        return Parsed::kWrong;
    }
    return check() ? Parsed::kRun : Parsed::kWrong;
}

bool Options::take(int option, const char* value) {
    uint32_t number = 0;
    const bool isNumber = value != nullptr && parseNumber(value, number);
    switch (option) {
        case kRoot:
            root = value;
            return !root.empty() || refuse("--root takes a folder");
        case kLibrary:
            library = value;
            return !library.empty() || refuse("--library takes a path");
        case kRealtime:
            return realtime = true;
        case kSteady:
            return steady = true;
        case kLevel:
            level = number;
            return (isNumber && (level == 1 || level == 2)) || refuse("--level is 1 or 2");
        case kFrames:
            frames = number;
            return (isNumber && frames != 0) || refuse("--frames takes a number above 0");
        case kFirstFrame:
            firstFrame = number;
            return (isNumber && firstFrame != 0) ||
                   refuse("--first-frame takes a number from 1 to 4294967294");
        case kDrop:
            drops.push_back(number);
            return isNumber || refuse("--drop takes a frame number");
        default:
            return refuse("unknown option");
    }
}

bool Options::check() {
    if (frames - 1 > zk::kNoFrameNumber - 1 - firstFrame || firstFrame == zk::kNoFrameNumber) {
        return refuse("the last frame's number is 4294967294 at most");
    }
    return checkDrops();
}

bool Options::checkDrops() {
    if (drops.empty()) {
        if (kDefaultDrop >= firstFrame && lastFrame() >= kDefaultDrop + kFramesAfterDrop) {
            drops.push_back(kDefaultDrop);
        }
        return true;
    }
    std::sort(drops.begin(), drops.end());
    if (std::adjacent_find(drops.begin(), drops.end()) != drops.end()) {
        return refuse("--drop names each frame once");
    }
    if (drops.size() > kMostDrops) {
        return refuse(
                "--drop is given 30 times at most: more would meet the recorder's limit of "
                "lines a day");
    }
    if (drops.front() < firstFrame || drops.back() > lastFrame()) {
        return refuse("--drop takes a frame of the session");
    }
    return drops.front() > kLastIgnoredDrop ||
           refuse("--drop takes a frame above 10: earlier drops are ignored by the recorder");
}

}  // namespace demo
