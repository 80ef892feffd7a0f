#include "tools/report/panelsHtml.h"

#include "tools/explain/Phrases.h"
#include "tools/plot/drawSession.h"
#include "tools/report/inlineSvg.h"

namespace vdrdump {
namespace {

std::optional<std::string> draw(const SessionHistory& history, const FrameRange& range,
                                const Findings* findings, const NodeNames& names,
                                const std::string& page) {
    SessionCurves curves(FieldChoice(), names.ticksPerSecond());
    for (const auto& [frame, stored] : history.frames) {
        if (range.meets({frame, frame})) {
            curves.add(stored->view());
        } else {
            curves.passBy(stored->view());
        }
    }
    curves.finish();
    Picture picture;
    picture.frames = range;
    if (findings != nullptr) {
        picture.lost.push_back(findings->lost);
    }
    return drawSession(picture, curves, names, PictureFormat::Svg, page);
}

}  // namespace

PanelsHtml panelsHtml(const SessionHistory& history, const FrameRange& range,
                      const Findings* findings, const NodeNames& names, const std::string& prefix,
                      const std::string& page) {
    const auto svg = draw(history, range, findings, names, page);
    const std::string element = svg ? inlineSvg(*svg, prefix + "-") : "";
    if (element.empty()) {
        return withoutPanels();
    }
    const std::string maker = makerOf(*svg);
    return {"<h3>Session, frames " + framesText(range) + "</h3>\n<figure class=\"wide panels\">\n" +
                    element + "</figure>\n",
            maker.empty() ? "gnuplot" : maker};
}

PanelsHtml withoutPanels() {
    return {"<p class=\"note\">Panels of intervals, latencies, costs and the device's state would "
            "stand here: they need gnuplot (package gnuplot-nox), which was not there or failed "
            "when this page was made.</p>\n",
            ""};
}

}  // namespace vdrdump
