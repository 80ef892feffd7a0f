#include "tools/plot/plotScript.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <iterator>

namespace vdrdump {
namespace {

constexpr char kMissingColor[] = "#d62728";
constexpr char kMissingTint[] = "#fbdcdc";
constexpr char kVideoColor[] = "#e3f1de";
constexpr char kLostLine[] = "dt 2 lw 2 lc rgb '#000000'";
// Told apart by most colour-blind people, and in print.
constexpr const char* kLineColors[] = {"#0072b2", "#e69f00", "#009e73", "#8c4b8c",
                                       "#56b4e9", "#d55e00", "#555555"};

// In pixels.
constexpr double kWidth = 1400;
constexpr double kPanels = 1150;  // for all together, as long as each stays readable
constexpr double kLowestPanel = 150;
constexpr double kHighestPanel = 300;
constexpr double kBetween = 16;
constexpr double kLine = 20;  // of text
constexpr double kLeft = 80;
constexpr double kRight = 1060;
constexpr double kKey = 1125;

constexpr size_t kLongestLine = 165;    // characters
constexpr size_t kLongestTitle = 36;    // of a curve
constexpr uint32_t kFewFrames = 120;    // of which each gets a dot
constexpr uint32_t kResolution = 1000;  // frames that are nearer to each other share a pixel

std::string printed(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string printed(const char* format, ...) {
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

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

bool isInsideCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;  // of UTF-8
}

// Cut where it would not fit beside the panels.
std::string fitted(const std::string& text, size_t most) {
    size_t characters = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        characters += isInsideCharacter(text[i]) ? 0 : 1;
        if (characters > most) {
            return text.substr(0, i) + "...";
        }
    }
    return text;
}

// Lines that fit onto the picture, broken at blanks.
std::vector<std::string> wrapped(std::string text) {
    std::vector<std::string> lines;
    while (text.size() > kLongestLine) {
        size_t end = text.rfind(' ', kLongestLine);
        if (end == std::string::npos || end == 0) {
            end = kLongestLine;
            while (end > 1 && isInsideCharacter(text[end])) {
                --end;
            }
        }
        lines.push_back(text.substr(0, end));
        text.erase(0, end + (text[end] == ' ' ? 1 : 0));
    }
    if (!text.empty()) {
        lines.push_back(text);
    }
    return lines;
}

// Where the axis starts and ends: close around its curves, and not below 0 where they are not.
std::string rangeText(const Axis& axis, const PlotCurves& curves) {
    Range<double> all;
    for (const Curve& curve : axis.curves) {
        const Range<double> one = curves.rangeOf(curve.number);
        if (!one.isEmpty()) {
            all.add(one.low());
            all.add(one.high());
        }
    }
    if (all.isEmpty()) {
        return "[0:1]\n";
    }
    const double size = std::max(std::fabs(all.low()), std::fabs(all.high()));
    const bool isOne = all.high() - all.low() <= 1e-9 * size;
    const double room = isOne ? std::max(size * 0.1, 1.0) : (all.high() - all.low()) * 0.06;
    const double low = all.low() >= 0 ? std::max(0.0, all.low() - room) : all.low() - room;
    return printed("[%.10g:%.10g]\n", low, all.high() + room);
}

class Script {
public:
    Script(const Picture& picture, const PanelChoice& choice, const SessionCurves& session)
          : mPicture(picture),
            mPanels(choice.panels),
            mSession(session),
            mCurves(session.curves()),
            mHeader(wrapped(picture.answer)) {
        for (const std::string& text : choice.leftOut) {
            for (std::string& line : wrapped(text)) {
                mFooter.push_back(std::move(line));
            }
        }
        if (mPanels.empty()) {
            mPanels.emplace_back();  // for the marks
        }
        const double share = kPanels / static_cast<double>(mPanels.size());
        mPanelHeight = std::min(kHighestPanel, std::max(kLowestPanel, share));
        mTop = 3 * kLine + kLine * static_cast<double>(mHeader.size());
        mHeight = mTop + static_cast<double>(mPanels.size()) * (mPanelHeight + kBetween) +
                  kLine * (2.5 + static_cast<double>(mFooter.size()));
    }

    std::string write(PictureFormat format) {
        writeTerminal(format);
        writeData();
        add("set multiplot\n");
        writeTexts();
        writeMarks();
        writeFrameAxis();
        for (size_t i = 0; i < mPanels.size(); ++i) {
            writePanel(i);
        }
        add("unset multiplot\n");
        return std::move(mText);
    }

private:
    void add(const std::string& text) { mText += text; }

    // The picture's lower edge is 0, its upper 1.
    double atHeight(double pixelsFromTop) const { return 1 - pixelsFromTop / mHeight; }

    void writeTerminal(PictureFormat format) {
        const bool isPng = format == PictureFormat::Png;
        add(std::string("set terminal ") + (isPng ? "pngcairo" : "svg") +
            printed(" size %.0f,%.0f noenhanced background rgb 'white' font 'sans,%d'\n", kWidth,
                    mHeight, isPng ? 10 : 13));
    }

    void writeData() {
        for (const Panel& panel : mPanels) {
            for (const Axis* axis : {&panel.left, &panel.right}) {
                for (const Curve& curve : axis->curves) {
                    writeCurve(curve.number);
                }
            }
        }
    }

    // Runs of neighbours become lines, what stands alone points: a frame, its lowest, its highest.
    void writeCurve(size_t curve) {
        std::string lines;
        std::string points;
        for (const PlotCurves::Run& run : mCurves.runsOf(curve)) {
            std::string& to = run.size() == 1 ? points : lines;
            for (const PlotCurves::Span& span : run) {
                to += printed("%u %.10g %.10g\n", span.frame, span.low, span.high);
            }
            lines += run.size() == 1 ? "" : "\n";
        }
        mHasLines.resize(std::max(mHasLines.size(), curve + 1));
        mHasPoints.resize(mHasLines.size());
        mHasLines[curve] = !lines.empty();
        mHasPoints[curve] = !points.empty();
        const std::string number = std::to_string(curve);
        add(lines.empty() ? "" : "$lines" + number + " << END\n" + lines + "END\n");
        add(points.empty() ? "" : "$points" + number + " << END\n" + points + "END\n");
    }

    void writeText(const std::string& text, double fromTop, const char* more) {
        add("set label " + quoted(text) +
            printed(" at screen %.4f, screen %.4f left %s\n", kLeft / kWidth, atHeight(fromTop),
                    more));
    }

    void writeTexts() {
        double at = 1.1 * kLine;
        writeText(fitted(mPicture.title, kLongestLine), at, "font ',15'");
        for (const std::string& line : mHeader) {
            at += kLine;
            writeText(line, at, "");
        }
        at = mHeight - kLine * (static_cast<double>(mFooter.size()) - 0.4);
        for (const std::string& line : mFooter) {
            writeText(line, at, "tc rgb '#444444'");
            at += kLine;
        }
        for (const FrameRange& lost : lostShown()) {
            const std::string which =
                    std::to_string(lost.first) +
                    (lost.last != lost.first ? "-" + std::to_string(lost.last) : "");
            add("set label 'lost: " + which +
                printed("' at first %.1f, screen %.4f center\n",
                        (static_cast<double>(lost.first) + lost.last) / 2,
                        atHeight(mTop - 0.5 * kLine)));
        }
    }

    std::vector<FrameRange> lostShown() const {
        std::vector<FrameRange> shown;
        for (const FrameRange& each : mPicture.lost) {
            if (each.first <= mPicture.frames.last && each.last >= mPicture.frames.first) {
                shown.push_back({std::max(each.first, mPicture.frames.first),
                                 std::min(each.last, mPicture.frames.last)});
            }
        }
        return shown;
    }

    // Frames that no pixel tells apart are marked as one.
    std::vector<FrameRange> missingShown() const {
        const uint32_t tooNear = (mPicture.frames.last - mPicture.frames.first) / kResolution;
        std::vector<FrameRange> shown;
        for (const FrameRange& each : mCurves.missing(mPicture.frames)) {
            if (!shown.empty() && each.first - shown.back().last <= tooNear + 1) {
                shown.back().last = std::max(shown.back().last, each.last);
            } else {
                shown.push_back(each);
            }
        }
        return shown;
    }

    void rectangle(double from, double to, double top, const std::string& style) {
        add(printed("set object rect from first %.1f, graph 0 to first %.1f, graph %g behind ",
                    from - 0.5, to + 0.5, top) +
            style + "\n");
    }

    // Each stays until the picture is complete, and so is drawn in every panel.
    void writeMarks() {
        for (const VideoWindow& window : mSession.videos()) {
            rectangle(window.startSeen ? window.first : mPicture.frames.first,
                      window.endSeen ? window.last : mPicture.frames.last, 1,
                      std::string("fc rgb '") + kVideoColor + "' fs solid noborder");
        }
        for (const FrameRange& gap : missingShown()) {
            // A border is at least a line wide, however many frames share a pixel.
            for (const auto& [top, color] : {std::pair(1.0, kMissingTint), {0.06, kMissingColor}}) {
                rectangle(gap.first, gap.last, top,
                          std::string("fc rgb '") + color + "' fs solid border lc rgb '" + color +
                                  "'");
            }
        }
        for (const FrameRange& lost : lostShown()) {
            for (uint64_t frame = lost.first; frame <= lost.last;
                 frame += std::max(1U, lost.last - lost.first)) {
                const std::string at = std::to_string(frame);
                add("set arrow from first " + at + ", graph 0 to first " + at +
                    ", graph 1 nohead back " + kLostLine + "\n");
            }
        }
    }

    void writeFrameAxis() {
        const FrameRange& frames = mPicture.frames;
        const double count = static_cast<double>(frames.last) - frames.first + 1;
        double step = std::pow(10, std::floor(std::log10(count)));
        step *= count / step > 5 ? 1 : count / step > 2 ? 0.5 : 0.2;
        step = std::max(1.0, std::round(step));
        add(printed("set xrange [%.1f:%.1f]\n", frames.first - 0.5, frames.last + 0.5) +
            printed("set xtics %.0f, %.0f\n", std::ceil(frames.first / step) * step, step) +
            "set grid lc rgb '#bdbdbd' lw 1 dt 1\nset style fill solid\n" +
            printed("set lmargin at screen %.4f\nset rmargin at screen %.4f\n", kLeft / kWidth,
                    kRight / kWidth));
    }

    void writePanel(size_t index) {
        const Panel& panel = mPanels[index];
        const double top = mTop + static_cast<double>(index) * (mPanelHeight + kBetween);
        add(printed("set tmargin at screen %.4f\nset bmargin at screen %.4f\n", atHeight(top),
                    atHeight(top + mPanelHeight)) +
            printed("set key at screen %.4f, screen %.4f left top Left reverse samplen 2\n",
                    kKey / kWidth, atHeight(top)));
        add("set ylabel " + quoted(panel.left.label) + "\nset yrange " +
            rangeText(panel.left, mCurves));
        if (panel.right.curves.empty()) {
            add("unset y2tics\nunset y2label\nset ytics mirror\n");
        } else {
            add("set ytics nomirror\nset y2tics\nset y2label " + quoted(panel.right.label) +
                "\nset y2range " + rangeText(panel.right, mCurves));
        }
        const bool isLast = index + 1 == mPanels.size();
        add(isLast ? "set format x '%.0f'\nset xlabel 'frame'\n" : "set format x ''\n");
        add("plot NaN notitle");
        size_t color = 0;
        for (const Curve& curve : panel.left.curves) {
            plotCurve(curve, panel, "x1y1", color++);
        }
        for (const Curve& curve : panel.right.curves) {
            plotCurve(curve, panel, "x1y2", color++);
        }
        add(index == 0 ? markTitles() + "\nunset label\n" : "\n");
    }

    // What belongs to the axis on the right is dashed.
    void plotCurve(const Curve& curve, const Panel& panel, const std::string& axes, size_t color) {
        const bool isRight = axes == "x1y2";
        const std::string number = std::to_string(curve.number);
        const std::string style =
                std::string(" lc rgb '") + kLineColors[color % std::size(kLineColors)] + "'";
        std::string key = " title " +
                          quoted(fitted(curve.title, kLongestTitle) + (isRight ? " (right)" : ""));
        const auto plot = [&](const char* data, const char* columns, const std::string& with) {
            add(std::string(", ") + data + number + " using " + columns + " axes " + axes +
                " with " + with + style);
        };
        if (mHasLines[curve.number]) {
            if (mCurves.isMerged()) {
                plot("$lines", "1:2:3", "filledcurves fs transparent solid 0.35");
                add(" notitle");
            }
            const bool hasDots =
                    !panel.isStepped() && mPicture.frames.last - mPicture.frames.first < kFewFrames;
            plot("$lines", "1:3",
                 panel.isStepped() ? "steps"
                 : hasDots         ? "linespoints pt 7 ps 0.3"
                                   : "lines");
            add((isRight ? " dt '-'" : "") + (" lw 1.5" + key));
            key = " notitle";
        }
        if (mHasPoints[curve.number]) {
            for (const char* columns : {"1:3", "1:2"}) {
                plot("$points", columns, "points pt 7 ps 0.5");
                add(key);
                key = " notitle";
            }
        }
    }

    // Of what the picture has.
    std::string markTitles() const {
        std::string titles;
        if (!mSession.videos().empty()) {
            titles += std::string(", NaN with boxes lc rgb '") + kVideoColor +
                      "' fs solid noborder title 'video recording'";
        }
        if (!missingShown().empty()) {
            titles += std::string(", NaN with boxes lc rgb '") + kMissingColor +
                      "' fs solid noborder title 'missing frames'";
        }
        if (!lostShown().empty()) {
            titles += std::string(", NaN with lines ") + kLostLine + " title 'lost frame'";
        }
        return titles;
    }

    const Picture& mPicture;
    std::vector<Panel> mPanels;
    const SessionCurves& mSession;
    const PlotCurves& mCurves;
    const std::vector<std::string> mHeader;
    std::vector<std::string> mFooter;
    double mPanelHeight = 0;
    double mTop = 0;              // of the first panel
    double mHeight = 0;           // of the picture
    std::vector<bool> mHasLines;  // of each curve
    std::vector<bool> mHasPoints;
    std::string mText;
};

}  // namespace

std::string plotScript(const Picture& picture, const PanelChoice& choice,
                       const SessionCurves& session, PictureFormat format) {
    return Script(picture, choice, session).write(format);
}

}  // namespace vdrdump
