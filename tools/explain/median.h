#pragma once

#include <vector>

namespace vdrdump {

// Of an even count the mean of the two in the middle; 0 of none.
double median(std::vector<double> values);
// The median distance from `from`, scaled so that it estimates a standard deviation where the
// values are spread normally. A few wild values do not move it.
double scaledDeviation(const std::vector<double>& values, double from);

}  // namespace vdrdump
