#include "tools/explain/median.h"

#include <algorithm>
#include <cmath>

namespace vdrdump {

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) {
        return *middle;
    }
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double scaledDeviation(const std::vector<double>& values, double from) {
    constexpr double kToStandardDeviation = 1.4826;
    std::vector<double> distances;
    distances.reserve(values.size());
    for (const double value : values) {
        distances.push_back(std::fabs(value - from));
    }
    return kToStandardDeviation * median(std::move(distances));
}

}  // namespace vdrdump
