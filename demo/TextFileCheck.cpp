#include "demo/TextFileCheck.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <fstream>

namespace demo {
namespace {

constexpr uint32_t kMode = 0777;
constexpr long kColumnsOutsideLists = 76;

long columnsOf(const vdr1::VDRData1& record) {
    return kColumnsOutsideLists +
           3L * (record.featureRequestStateInfoCount + record.featureMessageTypeInfoCount) +
           2L * (record.pluginAlgoCostTimeCount + record.semantAlgoCostTimeCount +
                 record.awbInfo_qawb_cap_saCount) +
           7L * record.nodeInfoCount;
}

bool startsWithNumber(const std::string& line, uint32_t number) {
    uint32_t found = 0;
    const char* const end = line.data() + line.size();
    const auto [stopped, error] = std::from_chars(line.data(), end, found);
    return error == std::errc() && stopped != end && *stopped == ',' && found == number;
}

}  // namespace

void TextFileCheck::run(const LossForecast& forecast, const FrameFactory& factory,
                        Findings& findings) {
    const FolderState now(mBefore.folder());
    const std::vector<std::string> changed = now.changedSince(mBefore);
    findings.expect(changed.size() == forecast.files().size(),
                    "%zu frame-loss files were written instead of %zu", changed.size(),
                    forecast.files().size());
    for (const LossForecast::File& expected : forecast.files()) {
        const std::string name = nameOf(expected);
        const bool written = std::count(changed.begin(), changed.end(), name) != 0;
        if (!findings.expect(written, "%s was not written", name.c_str())) {
            continue;
        }
        File file{expected, now.pathOf(name), now.sizeOf(name), now.modeOf(name), 0, {}};
        findings.expect(file.mode == kMode, "%s has mode %04" PRIo32, name.c_str(), file.mode);
        read(file, factory, findings);
        mFiles.push_back(std::move(file));
    }
}

// The device prints the frame number as a signed one.
std::string TextFileCheck::nameOf(const LossForecast::File& file) {
    const auto seconds = static_cast<time_t>(file.timeStamp / 1000000);
    tm local{};
    localtime_r(&seconds, &local);
    char day[32] = "";
    std::strftime(day, sizeof(day), "%Y%m%d_%H%M%S", &local);
    char name[64] = "";
    std::snprintf(name, sizeof(name), "VIDEO_DEBUG_%s_%08" PRId32 ".txt", day,
                  static_cast<int32_t>(file.lostFrame));
    return name;
}

void TextFileCheck::read(File& file, const FrameFactory& factory, Findings& findings) {
    std::ifstream input(file.path);
    for (std::string line; std::getline(input, line); ++file.lines) {
        if (file.lines == 0) {
            file.firstLine = line;
        }
        findings.expect(!input.eof(), "%s ends inside a line", file.path.c_str());
        checkLine(line, file.path, file.expected.firstFrame + file.lines, factory, findings);
    }
    findings.expect(file.lines == file.expected.lines(),
                    "%s has %" PRIu32 " lines instead of %" PRIu32, file.path.c_str(), file.lines,
                    file.expected.lines());
}

void TextFileCheck::checkLine(const std::string& line, const std::string& path, uint32_t frame,
                              const FrameFactory& factory, Findings& findings) {
    if (findings.expect(startsWithNumber(line, frame),
                        "%s: the line of frame %" PRIu32 " is missing", path.c_str(), frame)) {
        findings.expect(
                std::count(line.begin(), line.end(), ',') == columnsOf(factory.record(frame)),
                "%s: the line of frame %" PRIu32 " has too few or too many columns", path.c_str(),
                frame);
    }
}

}  // namespace demo
