#pragma once

#include <string>
#include <vector>

namespace vdrdump {

// What somebody most likely meant who wrote `word`: the candidate with the fewest letters that
// differ, or one that `word` is a part of. Empty where none is near.
std::string nearestName(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace vdrdump
