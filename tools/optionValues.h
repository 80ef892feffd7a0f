#pragma once

#include <string>
#include <vector>

#include "tools/CommandLine.h"

// What options take, from text. All throw CLI::ValidationError, which says what was expected.
namespace vdrdump {

uint32_t frameOf(const std::string& option, const std::string& text);
// "A:B", where either may be left out.
FrameRange framesOf(const std::string& text);
// "N" or "N:K": K frames on either side of N.
FrameRange aroundOf(const std::string& text);
uint32_t sessionOf(const std::string& text);
CommandLine::Format formatOf(const std::string& text);
Engine engineOf(const std::string& text);

// "; did you mean ...?" for the candidate nearest to `word`, empty where none is near.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

// What is wrong in the whole, once all options are read; completes the choice of fields and files.
void checkUsage(CommandLine& line);

}  // namespace vdrdump
