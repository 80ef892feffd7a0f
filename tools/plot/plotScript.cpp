#include "tools/plot/plotScript.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace vdrdump {
namespace {

struct Trace {
    Curve curve;
    const char* title;
};

struct Panel {
    const char* label;
    std::vector<Trace> traces;
    std::vector<Trace> rightTraces;  // on an axis of their own
    const char* rightLabel;
};

const std::vector<Panel>& panels() {
    static const std::vector<Panel> all = {
            {"frequency, GHz",
             {{Curve::Cpu0, "cpu0"}, {Curve::Cpu4, "cpu4"}, {Curve::Cpu7, "cpu7"}},
             {},
             ""},
            {"camera load, %",
             {{Curve::Usage, "camera load"}},
             {{Curve::Load1, "1 minute (right)"},
              {Curve::Load5, "5 minutes (right)"},
              {Curve::Load15, "15 minutes (right)"}},
             "load average"},
            {"memory, MiB",
             {{Curve::MemFree, "free"}, {Curve::MemAvailable, "available"}},
             {{Curve::UsedMem, "captures (right)"}},
             "captures"},
            {"temperature",
             {{Curve::FrontTemp, "shell front"},
              {Curve::BackTemp, "shell back"},
              {Curve::FrameTemp, "shell frame"}},
             {},
             ""},
            {"zoom ratio", {{Curve::Zoom, "zoom"}}, {}, ""},
            {"nodes per frame", {{Curve::Nodes, "nodes"}}, {}, ""},
    };
    return all;
}

constexpr std::string_view kLeftAxis = "x1y1";
constexpr std::string_view kRightAxis = "x1y2";
constexpr char kMissingColor[] = "#d62728";
constexpr char kVideoColor[] = "#e3f1de";
// Told apart by most colour-blind people, and in print.
constexpr const char* kLineColors[] = {"#0072b2", "#e69f00", "#009e73", "#8c4b8c"};

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

void marks(std::string& script, const SessionSummary& session, const VideoWindows& videos) {
    for (const VideoWindow& window : videos.windows()) {
        const uint32_t first = window.startSeen ? window.first : session.first;
        const uint32_t last = window.endSeen ? window.last : session.last;
        rectangle(script, first - 0.5, last + 0.5,
                  std::string("fc rgb '") + kVideoColor + "' fs solid noborder");
    }
    for (const FrameRange& gap : session.gaps) {
        // The border is drawn at least a line wide, however many frames share a pixel.
        rectangle(script, gap.first - 0.5, gap.last + 0.5,
                  std::string("fc rgb '") + kMissingColor + "' fs solid 0.5 border lc rgb '" +
                          kMissingColor + "'");
    }
}

// Room above and below the curves; a range that is a single value gets some, too.
std::string rangeText(const PlotCurves& curves, const std::vector<Trace>& traces) {
    Range<float> all;
    for (const Trace& trace : traces) {
        const Range<float> one = curves.rangeOf(trace.curve);
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

void addCurves(std::string& plot, const std::vector<Trace>& traces, std::string_view axes,
               size_t& color) {
    const char* const dashes = axes == kRightAxis ? " dt '-'" : "";
    for (const Trace& trace : traces) {
        const int low = 2 + 2 * static_cast<int>(trace.curve);
        const std::string high = std::to_string(low + 1);
        std::string style(" axes ");
        style.append(axes).append(" lc rgb '").append(kLineColors[color++]).append("'");
        plot.append(", $data using 1:").append(std::to_string(low)).append(":").append(high);
        plot.append(" with filledcurves").append(style);
        plot.append(" fs transparent solid 0.25 notitle, $data using 1:").append(high);
        plot.append(" with lines").append(style).append(dashes);
        plot.append(" lw 1.5 title ").append(quoted(trace.title));
    }
}

void addPanel(std::string& script, const Panel& panel, const PlotCurves& curves, bool isFirst,
              bool isLast) {
    script += std::string("set ylabel '") + panel.label + "'\n";
    script += "set yrange " + rangeText(curves, panel.traces);
    if (panel.rightTraces.empty()) {
        script += "unset y2tics\nunset y2label\nset ytics mirror\n";
    } else {
        script += std::string("set ytics nomirror\nset y2tics\nset y2label '") + panel.rightLabel +
                  "'\nset y2range " + rangeText(curves, panel.rightTraces);
    }
    script += isLast ? "set format x '%.0f'\nset xlabel 'frame'\n" : "set format x ''\n";
    std::string plot = "plot NaN notitle";
    if (isFirst) {
        plot += std::string(", NaN with boxes lc rgb '") + kVideoColor +
                "' fs solid noborder title 'video recording', NaN with boxes lc rgb '" +
                kMissingColor + "' fs solid 0.5 border title 'missing frames'";
    }
    size_t color = 0;
    addCurves(plot, panel.traces, kLeftAxis, color);
    addCurves(plot, panel.rightTraces, kRightAxis, color);
    script += plot + "\n";
}

}  // namespace

std::string plotScript(const std::string& path, const DumpFile& file, const SessionSummary& session,
                       const VideoWindows& videos, const PlotCurves& curves) {
    const bool isPng = path.size() >= 4 && path.compare(path.size() - 4, 4, ".png") == 0;
    std::string script = isPng ? "set terminal pngcairo size 1400,1500 noenhanced font 'sans,11'\n"
                               : "set terminal svg size 1400,1500 noenhanced font 'sans,13' "
                                 "background rgb 'white'\n";
    script += "set datafile missing 'nan'\n$data << END\n" + curves.table() + "END\n";
    const std::string title = file.path + ", session " + std::to_string(session.number) +
                              ": frames " + std::to_string(session.first) + " to " +
                              std::to_string(session.last) + ", " +
                              std::to_string(session.missing) + " missing";
    const auto& all = panels();
    script += "set multiplot layout " + std::to_string(all.size()) + ",1 title " + quoted(title) +
              " noenhanced margins 0.07,0.79,0.05,0.95 spacing 0,0.02\n";
    script += "set xrange [" + std::to_string(session.first - 0.5) + ":" +
              std::to_string(session.last + 0.5) + "]\n";
    script +=
            "set key at graph 1.09, graph 1 left top Left reverse samplen 2\nset grid lc rgb "
            "'#dddddd'\n"
            "set style data lines\n";
    marks(script, session, videos);
    for (size_t i = 0; i < all.size(); ++i) {
        addPanel(script, all[i], curves, i == 0, i + 1 == all.size());
    }
    return script + "unset multiplot\n";
}

}  // namespace vdrdump
