#pragma once

#include <string>

namespace vdrdump {

// A picture of gnuplot's as an element of a page, in which others may stand: without what a file
// has in front of it, and with `prefix` before every name that the picture gives to a part of
// itself. Empty where `svg` is no picture.
std::string inlineSvg(const std::string& svg, const std::string& prefix);

// The program that drew it, as it says; empty where it does not.
std::string makerOf(const std::string& svg);

}  // namespace vdrdump
