#pragma once

#include <string>
#include <vector>

// Text as it goes into a script for gnuplot.
namespace vdrdump {

std::string printed(const char* format, ...) __attribute__((format(printf, 1, 2)));

// In single quotes gnuplot takes everything as it stands but the quote itself.
std::string quoted(const std::string& text);

// At most as many characters, with dots where it was cut.
std::string fitted(const std::string& text, size_t most);

// Lines of at most as many bytes, broken at blanks.
std::vector<std::string> wrapped(std::string text, size_t most);

}  // namespace vdrdump
