#include "tools/names/NodeNames.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

constexpr std::string_view kBlanks = " \t\r";

void skipAny(std::string_view& text, std::string_view which) {
    text.remove_prefix(std::min(text.find_first_not_of(which), text.size()));
}

bool takeId(std::string_view& text, uint32_t& id) {
    skipAny(text, kBlanks);
    const bool isHex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    text.remove_prefix(isHex ? 2 : 0);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id, isHex ? 16 : 10);
    text.remove_prefix(static_cast<size_t>(stop - text.data()));
    return error == std::errc();
}

bool takeIds(std::string_view& line, NodeIds& ids) {
    for (size_t i = 0; i < ids.size(); ++i) {
        if (!takeId(line, ids[i])) {
            return false;
        }
        const size_t before = line.size();
        skipAny(line, i + 1 < ids.size() ? "/:, \t" : ",: \t\r");
        if (line.size() == before) {
            return false;  // an id must end where it ends
        }
    }
    return true;
}

// Of "clock nanoseconds"; none of any other line.
std::optional<double> clockOf(const std::string& line) {
    std::istringstream words(line);
    std::string first;
    std::string unit;
    std::string more;
    if (!(words >> first >> unit) || first != "clock" || words >> more) {
        return std::nullopt;
    }
    return unit == "nanoseconds"    ? std::optional(1e9)
           : unit == "microseconds" ? std::optional(1e6)
           : unit == "milliseconds" ? std::optional(1e3)
                                    : std::nullopt;
}

}  // namespace

std::string idsText(const NodeIds& ids) {
    char text[3 * sizeof("0xffffffff")];
    std::snprintf(text, sizeof(text), "0x%x:0x%x:0x%x", ids[0], ids[1], ids[2]);
    return text;
}

NodeNames NodeNames::fromFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) {
        throw std::runtime_error(printablePath(path) +
                                 ": expected a file with names of nodes: " + std::strerror(errno));
    }
    return fromText(path, text.str());
}

NodeNames NodeNames::fromText(const std::string& file, const std::string& text) {
    NodeNames names;
    std::istringstream lines(text);
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        std::string_view rest = line;
        skipAny(rest, kBlanks);
        if (rest.empty() || rest[0] == '#') {
            continue;
        }
        if (const auto ticksPerSecond = clockOf(line)) {
            names.mTicksPerSecond = ticksPerSecond;
            continue;
        }
        NodeIds ids{};
        const bool hasIds = takeIds(rest, ids);
        rest = rest.substr(0, rest.find_last_not_of(kBlanks) + 1);
        if (!hasIds || rest.empty()) {
            throw std::runtime_error(
                    printablePath(file) + ":" + std::to_string(number) +
                    ": expected three ids and a name, such as 0x2:0xca:0x0 scaler, or "
                    "the clock of the stamps, such as clock nanoseconds");
        }
        names.mNames[ids] = printablePath(std::string(rest));
    }
    return names;
}

std::string NodeNames::nameOf(const NodeIds& ids) const {
    const std::string name = find(ids);
    return name.empty() ? idsText(ids) : name + " (" + idsText(ids) + ")";
}

std::string NodeNames::find(const NodeIds& ids) const {
    const auto found = mNames.find(ids);
    return found == mNames.end() ? "" : found->second;
}

}  // namespace vdrdump
