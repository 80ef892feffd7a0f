#include "tools/plot/plotScript.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace vdrdump {
namespace {

constexpr std::string_view kLeftAxis = "x1y1";
constexpr std::string_view kRightAxis = "x1y2";
constexpr char kMissingColor[] = "#d62728";
constexpr char kVideoColor[] = "#e3f1de";
constexpr char kLostColor[] = "#000000";
// Told apart by most colour-blind people, and in print.
constexpr const char* kLineColors[] = {"#0072b2", "#e69f00", "#009e73",
                                       "#8c4b8c", "#56b4e9", "#d55e00"};

// In single quotes gnuplot takes everything as it stands but the quote itself.
std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char each : text) {
        const bool isControl = static_cast<unsigned char>(each) < ' ' || each == '\x7f';
        result += isControl ? '?' : each;
        result += each == '\'' ? "'" : "";
    }
    return result + "'";
}

void rectangle(std::string& script, double from, double to, const std::string& style) {
    script += "set object rect from first " + std::to_string(from) + ", graph 0 to first " +
              std::to_string(to) + ", graph 1 behind " + style + "\n";
}

void marks(std::string& script, const Picture& picture) {
    for (const VideoWindow& window : picture.videos) {
        const uint32_t first = window.startSeen ? window.first : picture.frames.first;
        const uint32_t last = window.endSeen ? window.last : picture.frames.last;
        rectangle(script, first - 0.5, last + 0.5,
                  std::string("fc rgb '") + kVideoColor + "' fs solid noborder");
    }
    for (const FrameRange& gap : picture.missing) {
        // The border is drawn at least a line wide, however many frames share a pixel.
        rectangle(script, gap.first - 0.5, gap.last + 0.5,
                  std::string("fc rgb '") + kMissingColor + "' fs solid 0.5 border lc rgb '" +
                          kMissingColor + "'");
    }
    if (picture.lost && *picture.lost >= picture.frames.first &&
        *picture.lost <= picture.frames.last) {
        const std::string frame = std::to_string(*picture.lost);
        script += "set arrow from first " + frame + ", graph 0 to first " + frame +
                  ", graph 1 nohead dt 3 lw 1.5 lc rgb '" + kLostColor + "'\n";
    }
}

// Room above and below the curves; a range that is a single value gets some, too.
std::string rangeText(const PlotCurves& curves, size_t first, size_t count) {
    Range<float> all;
    for (size_t i = first; i < first + count; ++i) {
        const Range<float> one = curves.rangeOf(i);
        if (!one.isEmpty()) {
            all.add(one.low());
            all.add(one.high());
        }
    }
    if (all.isEmpty()) {
        return "[0:1]\n";
    }
    const double low = all.low();
    const double high = all.high();
    // to_string() has six decimals: what differs by less is a single value, too.
    const double room =
            high - low > 1e-4 ? (high - low) * 0.08 : std::max(std::abs(low) * 0.1, 1.0);
    return "[" + std::to_string(low - room) + ":" + std::to_string(high + room) + "]\n";
}

// `curve` is the number of the first trace among all curves, `color` among those of the panel.
void addCurves(std::string& plot, const std::vector<Trace>& traces, std::string_view axes,
               size_t curve, size_t color) {
    const char* const dashes = axes == kRightAxis ? " dt '-'" : "";
    for (const Trace& trace : traces) {
        const std::string low = std::to_string(2 + 2 * curve);
        const std::string high = std::to_string(3 + 2 * curve);
        std::string style(" axes ");
        style.append(axes).append(" lc rgb '");
        style.append(kLineColors[color++ % std::size(kLineColors)]).append("'");
        plot.append(", $data using 1:").append(low).append(":").append(high);
        plot.append(" with filledcurves").append(style);
        plot.append(" fs transparent solid 0.25 notitle, $data using 1:").append(high);
        plot.append(" with lines").append(style).append(dashes);
        plot.append(" lw 1.5 title ").append(quoted(trace.title));
        ++curve;
    }
}

std::string markTitles(const Picture& picture) {
    std::string titles = std::string(", NaN with boxes lc rgb '") + kVideoColor +
                         "' fs solid noborder title 'video recording', NaN with boxes lc rgb '" +
                         kMissingColor + "' fs solid 0.5 border title 'missing frames'";
    if (picture.lost) {
        titles += std::string(", NaN with lines dt 3 lw 1.5 lc rgb '") + kLostColor +
                  "' title 'lost frame'";
    }
    return titles;
}

std::string panelText(const Panel& panel, const PlotCurves& curves, size_t curve,
                      const std::string& titles, bool isLast) {
    const size_t right = curve + panel.traces.size();
    std::string script = "set ylabel " + quoted(panel.label) + "\nset yrange " +
                         rangeText(curves, curve, panel.traces.size());
    if (panel.rightTraces.empty()) {
        script += "unset y2tics\nunset y2label\nset ytics mirror\n";
    } else {
        script += "set ytics nomirror\nset y2tics\nset y2label " + quoted(panel.rightLabel) +
                  "\nset y2range " + rangeText(curves, right, panel.rightTraces.size());
    }
    script += isLast ? "set format x '%.0f'\nset xlabel 'frame'\n" : "set format x ''\n";
    std::string plot = "plot NaN notitle" + titles;
    addCurves(plot, panel.traces, kLeftAxis, curve, 0);
    addCurves(plot, panel.rightTraces, kRightAxis, right, panel.traces.size());
    return script + plot + "\n";
}

}  // namespace

std::string plotScript(const Picture& picture, const std::vector<Panel>& panels,
                       const PlotCurves& curves) {
    const std::string& path = picture.path;
    const bool isPng = path.size() >= 4 && path.compare(path.size() - 4, 4, ".png") == 0;
    std::string script = isPng ? "set terminal pngcairo size 1400,1500 noenhanced font 'sans,11'\n"
                               : "set terminal svg size 1400,1500 noenhanced font 'sans,13' "
                                 "background rgb 'white'\n";
    script += "set datafile missing 'nan'\n$data << END\n" + curves.table() + "END\n";
    script += "set multiplot layout " + std::to_string(panels.size()) + ",1 title " +
              quoted(picture.title) + " noenhanced margins 0.07,0.79,0.05,0.95 spacing 0,0.02\n";
    script += "set xrange [" + std::to_string(picture.frames.first - 0.5) + ":" +
              std::to_string(picture.frames.last + 0.5) + "]\n";
    script +=
            "set key at graph 1.09, graph 1 left top Left reverse samplen 2\nset grid lc rgb "
            "'#dddddd'\n"
            "set style data lines\n";
    marks(script, picture);
    size_t curve = 0;
    for (size_t i = 0; i < panels.size(); ++i) {
        script += panelText(panels[i], curves, curve, i == 0 ? markTitles(picture) : "",
                            i + 1 == panels.size());
        curve += panels[i].traces.size() + panels[i].rightTraces.size();
    }
    return script + "unset multiplot\n";
}

}  // namespace vdrdump
