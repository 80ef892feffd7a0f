#include "tools/report/recordsHtml.h"

#include <algorithm>
#include <cstdio>

#include "tools/explain/Measurements.h"
#include "tools/explain/Phrases.h"
#include "tools/explain/clocksOf.h"
#include "tools/report/htmlText.h"
#include "tools/sink/recordText.h"

namespace vdrdump {
namespace {

constexpr size_t kMost = 1000;  // records, some three megabytes

bool isIn(const std::vector<FrameRange>& ranges, uint32_t frame) {
    return std::any_of(ranges.begin(), ranges.end(), [frame](const FrameRange& range) {
        return range.meets({frame, frame});
    });
}

// What it took, in a line.
class FrameWords {
public:
    FrameWords(const FrameMap& frames, const NodeNames& names)
          : mNames(names), mMeasurements(frames, clocksOf(frames, names.ticksPerSecond())) {
        mFindings.clocks = clocksOf(frames, names.ticksPerSecond());
    }

    std::string of(uint32_t frame) const {
        std::string words;
        const Comparison* slowest = nullptr;
        Comparison node;
        for (const auto& [subject, series] : mMeasurements.all()) {
            const auto at = series.find(frame);
            if (at == series.end()) {
                continue;
            }
            Comparison value;
            value.subject = subject;
            value.value = at->second;
            if (subject.quantity == Quantity::Interval) {
                words += ", " + text(value) + " after the frame before";
            } else if (subject.quantity == Quantity::Latency) {
                words += ", latency " + text(value);
            } else if (subject.quantity == Quantity::NodeWork &&
                       (slowest == nullptr || value.value > slowest->value)) {
                node = value;
                slowest = &node;
            }
        }
        return slowest == nullptr ? words
                                  : words + ", longest in " +
                                            Phrases(mFindings, mNames).node(node.subject.node) +
                                            ": " + text(node);
    }

private:
    std::string text(const Comparison& value) const {
        return Phrases(mFindings, mNames).value(value, value.value);
    }

    const NodeNames& mNames;
    const Measurements mMeasurements;
    Findings mFindings;  // of which only the clocks are known
};

// A link to what is folded unfolds all around it.
std::string recordHtml(uint32_t frame, const Record& record, const RecordList& list,
                       const FrameWords& words, const NodeNames& names) {
    const bool isLost = isIn(list.lost, frame);
    const std::string number = std::to_string(frame);
    return std::string("<details class=\"record") + (isLost ? " lost" : "") + "\"><summary>frame " +
           number + (isLost ? ", lost" : "") + (record.isWhole() ? "" : ", damaged") +
           htmlText(words.of(frame)) + "</summary><pre id=\"" + list.anchor + number + "\">" +
           htmlText(knownText(record, names)) + "</pre></details>\n";
}

}  // namespace

std::string recordsHtml(const RecordList& list, const NodeNames& names) {
    const FrameWords words(list.history->frames, names);
    std::string html;
    size_t count = 0;
    for (const auto& [frame, stored] : list.history->frames) {
        if (isIn(list.ranges, frame) && ++count <= kMost) {
            html += recordHtml(frame, stored->view(), list, words, names);
        }
    }
    if (count == 0) {
        return "";
    }
    return "<details class=\"records\"><summary>" + std::to_string(count) +
           (count == 1 ? " record" : " records") + "</summary>\n" +
           "<p class=\"note\">A field that is not listed is 0." +
           (count > kMost ? " These are the first " + std::to_string(kMost) + " records." : "") +
           "</p>\n" + html + "</details>\n";
}

}  // namespace vdrdump
