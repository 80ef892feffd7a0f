#include "tools/trace/exportTrace.h"

#include <algorithm>
#include <stdexcept>

#include "tools/explain/SegmentCollector.h"
#include "tools/names/NodeNames.h"
#include "tools/output/Output.h"
#include "tools/trace/TraceEvents.h"

namespace vdrdump {
namespace {

std::vector<LossCase> casesOf(const LossCases& found, const SessionHistory* history) {
    std::vector<LossCase> cases;
    std::copy_if(found.cases.begin(), found.cases.end(), std::back_inserter(cases),
                 [history](const LossCase& each) { return each.history.get() == history; });
    return cases;
}

std::vector<FrameRange> shownOf(const LossRequest& request, const std::vector<LossCase>& cases) {
    std::vector<FrameRange> shown;
    if (request.frames) {
        shown.push_back(*request.frames);
    }
    for (const LossCase& each : cases) {
        shown.push_back(SegmentCollector::around(each.lost));
    }
    return shown;
}

}  // namespace

bool exportTrace(const TraceRequest& request) {
    const NodeNames names =
            request.names.empty() ? NodeNames() : NodeNames::fromFile(request.names);
    const GatheredLosses gathered = gatherLosses(request.which);
    Output output(request.output);
    TraceEvents events(output, names);
    for (const auto& history : gathered.found.histories) {
        const std::vector<LossCase> cases = casesOf(gathered.found, history.get());
        if (!history->frames.empty() && (request.which.frames || !cases.empty())) {
            events.add(*history, cases, shownOf(request.which, cases));
        }
    }
    if (events.isEmpty()) {
        throw std::runtime_error(request.which.frames
                                         ? "no record of the frames that were asked for"
                                         : "no loss with records near it: choose frames with "
                                           "--frames, or the lost one with --lost");
    }
    events.finish();
    return output.finish() && gathered.isWhole;
}

}  // namespace vdrdump
