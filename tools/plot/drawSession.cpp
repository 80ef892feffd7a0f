#include "tools/plot/drawSession.h"

#include "tools/plot/choosePanels.h"
#include "tools/plot/plotScript.h"
#include "tools/plot/runGnuplot.h"

namespace vdrdump {

std::optional<std::string> drawSession(const Picture& picture, const SessionCurves& session,
                                       const NodeNames& names, PictureFormat format,
                                       const std::string& name) {
    return runGnuplot(plotScript(picture, choosePanels(session, names), session, format), name);
}

}  // namespace vdrdump
