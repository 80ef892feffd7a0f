#include "tools/read/lostFrameOf.h"

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

std::optional<uint32_t> lostFrameOf(const std::string& path) {
    constexpr std::string_view kPrefix = "VIDEO_DEBUG_";
    std::string_view name = path;
    const size_t at = name.rfind(kPrefix);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    name.remove_prefix(at + kPrefix.size());
    if (!skipDigits(name, 8) || !skip(name, "_") || !skipDigits(name, 6) || !skip(name, "_")) {
        return std::nullopt;
    }
    // The writer prints the number signed: from 2^31 on it is negative.
    int64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    name.remove_prefix(static_cast<size_t>(end - name.data()));
    if (error != std::errc() || name != ".txt" || number < INT32_MIN || number > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(number);
}

}  // namespace vdrdump
