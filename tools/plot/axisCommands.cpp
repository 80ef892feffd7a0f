#include "tools/plot/axisCommands.h"

#include <algorithm>
#include <cmath>

#include "tools/plot/plotText.h"

namespace vdrdump {
namespace {

constexpr double kMostIntegers = 8;  // on an axis that has a number at each

bool isOfIntegers(const Axis& axis) {
    return std::all_of(axis.curves.begin(), axis.curves.end(), [](const Curve& curve) {
        return curve.source.column != nullptr && curve.source.column->kind != Kind::F32 && curve.factor == 1;
    });
}

}  // namespace

std::string axisCommands(const std::string& name, const Axis& axis, const PlotCurves& curves,
                         double leastPart) {
    Range<double> all;
    for (const Curve& curve : axis.curves) {
        const Range<double> one = curves.rangeOf(curve.number);
        if (!one.isEmpty()) {
            all.add(one.low());
            all.add(one.high());
        }
    }
    if (all.isEmpty()) {
        return "set " + name + "range [0:1]\nunset " + name + "tics\n";
    }
    const double size = std::max(std::fabs(all.low()), std::fabs(all.high()));
    const double span = all.high() - all.low();
    const bool isOne = span <= 1e-9 * size;
    const double room = isOne ? std::max(size * 0.1, 1.0)
                              : std::max(span * 0.06, (leastPart * size - span) / 2);
    const double high = all.high() + room;
    const double lowest = all.low() >= 0 ? -0.02 * high : -INFINITY;
    const double low = std::max(lowest, all.low() - room);
    const bool hasFew = isOfIntegers(axis) && high - low < kMostIntegers;
    const char* const format = size < 1e6 ? "% h" : size < 1e7 ? "%.0f" : "%.1s%c";
    return printed("set %srange [%.10g:%.10g]\nset %stics %s\nset format %s '%s'\n", name.c_str(),
                   low, high, name.c_str(), hasFew ? "1" : "autofreq", name.c_str(), format);
}

}  // namespace vdrdump
