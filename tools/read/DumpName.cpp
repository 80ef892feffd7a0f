#include "tools/read/DumpName.h"

#include <charconv>
#include <string_view>

namespace vdrdump {
namespace {

bool skipDigits(std::string_view& text, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    text.remove_prefix(count);
    return true;
}

bool skip(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

}  // namespace

DumpName DumpName::of(const std::string& path) {
    constexpr std::string_view kPrefix = "VIDEO_DEBUG_";
    const size_t at = path.rfind(kPrefix);
    if (at == std::string::npos) {
        return {};
    }
    const std::string_view digits = std::string_view(path).substr(at + kPrefix.size());
    std::string_view name = digits;
    if (!skipDigits(name, 8) || !skip(name, "_") || !skipDigits(name, 6)) {
        return {};
    }
    DumpName result;
    const auto part = [digits](size_t begin, size_t size) {
        return std::string(digits.substr(begin, size));
    };
    result.time = part(0, 4) + "-" + part(4, 2) + "-" + part(6, 2) + " " + part(9, 2) + ":" +
                  part(11, 2) + ":" + part(13, 2);
    if (!skip(name, "_")) {
        return result;
    }
    // The writer prints the number signed: from 2^31 on it is negative.
    int64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    name.remove_prefix(static_cast<size_t>(end - name.data()));
    if (error == std::errc() && name == ".txt" && number >= INT32_MIN && number <= INT32_MAX) {
        result.lostFrame = static_cast<uint32_t>(number);
    }
    return result;
}

}  // namespace vdrdump
