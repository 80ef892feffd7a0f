#include "tools/output/shellWord.h"

#include <algorithm>
#include <cctype>

#include "tools/output/printablePath.h"

namespace vdrdump {
namespace {

bool isPlain(char each) {
    return std::isalnum(static_cast<unsigned char>(each)) != 0 ||
           std::string("_-+=:,./@%^").find(each) != std::string::npos;
}

std::string replaced(const std::string& text, const std::string& quote) {
    std::string result;
    for (const char each : text) {
        result += each == '\'' ? quote : std::string(1, each);
    }
    return result;
}

}  // namespace

std::string shellWord(const std::string& argument) {
    const std::string shown = printablePath(argument);
    if (shown != argument) {
        return "$'" + replaced(shown, "\\'") + "'";
    }
    const bool needsNone = !shown.empty() && std::all_of(shown.begin(), shown.end(), isPlain);
    return needsNone ? shown : "'" + replaced(shown, "'\\''") + "'";
}

}  // namespace vdrdump
