#pragma once

#include <string>

#include "tools/explain/Findings.h"

namespace vdrdump {

// Parts of sentences for what was found out about one loss, in which nodes have the user's names.
class Phrases {
public:
    // Both must outlive this.
    Phrases(const Findings& findings, const NodeNames& names)
          : mFindings(findings), mNames(names) {}

    // "frame 150" or "frames 150-152".
    std::string lost() const;
    // The likeliest cause.
    std::string cause() const;

    // "work of node 0x2:0xca:0x0".
    std::string subject(const Subject& subject) const;
    // "333.3 ms", or a bare number where the unit is not known.
    std::string value(const Comparison& comparison, double value) const;
    // "median 14.0 ms, highest other 14.4 ms in frame 147".
    std::string beside(const Comparison& comparison) const;
    std::string change(const Change& change) const;
    std::string allocation(const SlowAllocation& allocation) const;
    std::string stuck(const StuckAt& stuck) const;
    std::string span(const GapSpan& span) const;
    std::string bottleneck(const Bottleneck& bottleneck) const;
    std::string node(const NodeIds& ids) const { return "node " + mNames.nameOf(ids); }

private:
    std::string frame(uint32_t frame) const;
    std::string happened(const Comparison& comparison) const;
    std::string standsOut() const;
    std::string slowAllocation() const;
    std::string heat() const;
    std::string stuckNode() const;
    std::string alsoBottleneck() const;
    std::string noValueStandsOut() const;
    std::string noRecord() const;
    std::string unknown() const;
    std::string time(double value, bool isKnown) const;

    const Findings& mFindings;
    const NodeNames& mNames;
};

std::string framesText(const FrameRange& frames);  // "30" or "30-31"

}  // namespace vdrdump
