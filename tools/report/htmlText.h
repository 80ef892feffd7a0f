#pragma once

#include <string>
#include <string_view>

namespace vdrdump {

// Text as it stands in HTML and SVG, between tags and in quoted attributes alike.
std::string htmlText(std::string_view text);

}  // namespace vdrdump
