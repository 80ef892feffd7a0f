#include "tools/explain/explainDumps.h"

#include "tools/explain/explainLosses.h"
#include "tools/explain/explanationJson.h"
#include "tools/explain/explanationText.h"
#include "tools/output/Output.h"

namespace vdrdump {

bool explainDumps(const ExplainRequest& request) {
    const NodeNames names =
            request.names.empty() ? NodeNames() : NodeNames::fromFile(request.names);
    const GatheredLosses gathered = gatherLosses(request.which);
    const Explanations explanations = explainLosses(gathered, names.ticksPerSecond());
    if (explanations.losses.empty() && gathered.isNothingRead() && !request.isJson) {
        return false;  // what is wrong has been said, and of losses nothing is known
    }
    Output output("-");
    output.append(request.isJson ? explanationJson(explanations, names)
                                 : explanationText(explanations, names));
    return output.finish() && gathered.isWhole;
}

}  // namespace vdrdump
