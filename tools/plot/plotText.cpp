#include "tools/plot/plotText.h"

#include <cstdarg>
#include <cstdio>

namespace vdrdump {
namespace {

bool isInsideCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;  // of UTF-8
}

}  // namespace

std::string printed(const char* format, ...) {
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char each : text) {
        const bool isControl = static_cast<unsigned char>(each) < ' ' || each == '\x7f';
        result += isControl ? '?' : each;
        result += each == '\'' ? "'" : "";
    }
    return result + "'";
}

std::string fitted(const std::string& text, size_t most) {
    size_t characters = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        characters += isInsideCharacter(text[i]) ? 0 : 1;
        if (characters > most) {
            return text.substr(0, i) + "...";
        }
    }
    return text;
}

std::vector<std::string> wrapped(std::string text, size_t most) {
    std::vector<std::string> lines;
    while (text.size() > most) {
        size_t end = text.rfind(' ', most);
        if (end == std::string::npos || end == 0) {
            end = most;
            while (end > 1 && isInsideCharacter(text[end])) {
                --end;
            }
        }
        lines.push_back(text.substr(0, end));
        text.erase(0, end + (text[end] == ' ' ? 1 : 0));
    }
    if (!text.empty()) {
        lines.push_back(text);
    }
    return lines;
}

}  // namespace vdrdump
