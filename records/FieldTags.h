#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace zk {

// Tags name the fields at the interface; they are dense and follow the layout.
inline constexpr uint32_t kTagCount = 39;
inline constexpr uint32_t kTagVideoAction = 8;

// Field name -> tag, all 39 of them.
std::unordered_map<std::string, uint16_t> makeName2Tag();

}  // namespace zk
