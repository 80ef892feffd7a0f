#pragma once

#include <cstdio>
#include <string>
#include <type_traits>

#include "tools/session/FrameClock.h"
#include "tools/session/LossFinder.h"
#include "tools/session/Range.h"
#include "tools/session/VideoWindows.h"
#include "tools/sink/RecordSink.h"

// The words in which `info` tells what a dump holds.
namespace vdrdump {

std::string kindWords(const DumpFile& file);
// "30" or "30-31".
std::string frameWords(const FrameRange& frames);
std::string missingWords(const SessionSummary& session);
std::string videoWords(const VideoWindow& window);
std::string clockWords(const FrameClock& clock);
// "frame 150 announced, has a record".
std::string lossWords(const Loss& loss);

template <typename T>
std::string rangeWords(const Range<T>& range, const char* unit) {
    if (range.isEmpty()) {
        return "not known";
    }
    const auto text = [](T value) {
        if constexpr (std::is_floating_point_v<T>) {
            char buffer[64];
            std::snprintf(buffer, sizeof(buffer), "%.2f", static_cast<double>(value));
            return std::string(buffer);
        } else {
            return std::to_string(value);
        }
    };
    const std::string low = text(range.low());
    const std::string high = text(range.high());
    return (low == high ? low : low + " to " + high) + unit;
}

}  // namespace vdrdump
