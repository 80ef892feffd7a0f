#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace zk {

// Field name -> tag, all of them.
std::unordered_map<std::string, uint16_t> makeName2Tag();

}  // namespace zk
