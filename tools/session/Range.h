#pragma once

#include <algorithm>
#include <limits>

namespace vdrdump {

// Lowest and highest of the values that were added.
template <typename T>
class Range {
public:
    void add(T value) {
        mLow = std::min(mLow, value);  // in this order a NaN changes neither
        mHigh = std::max(mHigh, value);
    }
    bool isEmpty() const { return mLow > mHigh; }
    T low() const { return mLow; }
    T high() const { return mHigh; }

private:
    T mLow = std::numeric_limits<T>::max();
    T mHigh = std::numeric_limits<T>::lowest();
};

}  // namespace vdrdump
