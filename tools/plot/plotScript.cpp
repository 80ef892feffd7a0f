#include "tools/plot/plotScript.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "tools/plot/axisCommands.h"
#include "tools/plot/plotText.h"

namespace vdrdump {
namespace {

constexpr char kMissingColor[] = "#d62728";
constexpr char kMissingTint[] = "#fde6e6";
constexpr char kVideoColor[] = "#e3f1de";
constexpr char kLostColor[] = "#ffdf80";
constexpr char kMarkColor[] = "#000000";
constexpr char kLostLine[] = "dt 2 lw 1.5 lc rgb '#000000'";
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
constexpr double kAnswerLine = 25;
constexpr double kMissingStrip = 6;  // above a panel
constexpr double kLeft = 88;
constexpr double kRight = 1030;
constexpr double kKey = 1135;
constexpr double kLeftLabel = 12;
constexpr double kRightLabel = 1112;

constexpr size_t kLongestAnswer = 135;
constexpr size_t kLongestLine = 178;  // characters
constexpr size_t kLongestTitle = 33;  // of a curve
// An axis spans at least that part of its values: less is noise, and times have more of it.
constexpr double kLeastPart = 0.05;
constexpr double kLeastPartOfTimes = 0.2;
constexpr double kMostOfLost = 0.03;    // of the frames on either side of a lost one
constexpr double kFewFrames = 120;      // of which each gets a dot
constexpr uint32_t kResolution = 1000;  // frames that are nearer to each other share a pixel

// Lays the picture out and writes its script from top to bottom, once.
class Script {
public:
    Script(const Picture& picture, const PanelChoice& choice, const SessionCurves& session)
          : mPicture(picture),
            mPanels(choice.panels),
            mSession(session),
            mCurves(session.curves()),
            mAnswer(wrapped(picture.answer, kLongestAnswer)) {
        for (const std::string& text : choice.leftOut) {
            for (std::string& line : wrapped(text, kLongestLine)) {
                mFooter.push_back(std::move(line));
            }
        }
        if (mPanels.empty()) {
            mPanels.emplace_back();  // for the marks
        }
        const double share = kPanels / static_cast<double>(mPanels.size());
        mPanelHeight = std::min(kHighestPanel, std::max(kLowestPanel, share));
        mTop = 2.8 * kLine + kAnswerLine * static_cast<double>(mAnswer.size());
        mHeight = mTop + static_cast<double>(mPanels.size()) * (mPanelHeight + kBetween) +
                  kLine * (2.5 + static_cast<double>(mFooter.size()));
    }

    std::string write(PictureFormat format) {
        writeTerminal(format);
        writeData();
        add("set multiplot\n");
        writeTexts(format == PictureFormat::Png);
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
                    writeCurve(curve, panel.isStepped());
                }
            }
        }
    }

    // Runs of neighbours become lines, what stands alone points: a frame, its lowest, its highest.
    // A step is a line as long as it is level, so that its dashes show.
    void writeCurve(const Curve& curve, bool isStepped) {
        std::string lines;
        std::string points;
        for (const PlotCurves::Run& run : mCurves.runsOf(curve.number)) {
            const bool isLine = run.size() > 1 && !curve.isMark;
            std::string& to = isLine ? lines : points;
            for (size_t i = 0; i < run.size(); ++i) {
                const bool isLevel = isStepped && i != 0 && i + 1 < run.size() &&
                                     run[i].low == run[i - 1].low && run[i].high == run[i - 1].high;
                to += isLevel ? ""
                              : printed("%u %.10g %.10g\n", run[i].frame, run[i].low, run[i].high);
            }
            if (isLine) {
                const PlotCurves::Span& last = run.back();
                lines += isStepped ? printed("%u.5 %.10g %.10g\n\n", last.lastFrame, last.low,
                                             last.high)
                                   : "\n";
            }
        }
        mHasLines.resize(std::max(mHasLines.size(), curve.number + 1));
        mHasPoints.resize(mHasLines.size());
        mHasLines[curve.number] = !lines.empty();
        mHasPoints[curve.number] = !points.empty();
        const std::string number = std::to_string(curve.number);
        add(lines.empty() ? "" : "$lines" + number + " << END\n" + lines + "END\n");
        add(points.empty() ? "" : "$points" + number + " << END\n" + points + "END\n");
    }

    void writeText(const std::string& text, double fromTop, const char* more) {
        add("set label " + quoted(text) +
            printed(" at screen %.4f, screen %.4f left %s\n", kLeft / kWidth, atHeight(fromTop),
                    more));
    }

    void writeTexts(bool isPng) {
        double at = kLine;
        for (const std::string& line : mAnswer) {
            writeText(line, at, isPng ? "font ',13'" : "font ',17'");
            at += kAnswerLine;
        }
        writeText(fitted(mPicture.title, kLongestLine), at, "");
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
                        atHeight(mTop - 0.7 * kLine)));
        }
    }

    std::optional<FrameRange> inPicture(const FrameRange& range) const {
        const FrameRange shown{std::max(range.first, mPicture.frames.first),
                               std::min(range.last, mPicture.frames.last)};
        return shown.first <= shown.last ? std::optional(shown) : std::nullopt;
    }

    std::vector<FrameRange> videosShown() const {
        std::vector<FrameRange> shown;
        for (const VideoWindow& window : mSession.videos()) {
            const auto part = inPicture({window.startSeen ? window.first : mPicture.frames.first,
                                         window.endSeen ? window.last : mPicture.frames.last});
            if (part) {
                shown.push_back(*part);
            }
        }
        return shown;
    }

    std::vector<FrameRange> lostShown() const {
        std::vector<FrameRange> shown;
        for (const FrameRange& each : mPicture.lost) {
            if (const auto part = inPicture(each)) {
                shown.push_back(*part);
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

    // Behind the curves; `low` and `high` as parts of a panel's height. The border is at least a
    // line wide, however many frames share a pixel.
    void rectangle(const FrameRange& frames, double halfFrame, double low, double high,
                   const char* color, bool hasBorder) {
        add(printed("set object rect from first %.3f, graph %.3f to first %.3f, graph %.3f noclip "
                    "behind fc rgb '%s' fs solid ",
                    frames.first - halfFrame, low, frames.last + halfFrame, high, color) +
            (hasBorder ? std::string("border lc rgb '") + color + "'\n" : "noborder\n"));
    }

    // Each stays until the picture is complete, and so is drawn in every panel; the later cover the
    // earlier.
    void writeMarks() {
        for (const FrameRange& video : videosShown()) {
            rectangle(video, 0.5, 0, 1, kVideoColor, false);
        }
        const double strip = 1 + kMissingStrip / mPanelHeight;
        for (const FrameRange& gap : missingShown()) {
            rectangle(gap, 0.5, 0, 1, kMissingTint, true);
            rectangle(gap, 0.5, 1, strip, kMissingColor, true);
        }
        // Of few frames one would fill much of the picture.
        const double halfFrame = std::min(0.5, kMostOfLost * frameCount());
        for (const FrameRange& lost : lostShown()) {
            rectangle(lost, halfFrame, 0, 1, kLostColor, false);
            verticalLine(lost.first);
            if (lost.last != lost.first) {
                verticalLine(lost.last);
            }
        }
    }

    void verticalLine(uint32_t frame) {
        add(printed("set arrow from first %u, graph 0 to first %u, graph 1 nohead back ", frame,
                    frame) +
            kLostLine + "\n");
    }

    void writeFrameAxis() {
        const FrameRange& frames = mPicture.frames;
        const double count = frameCount();
        double step = std::pow(10, std::floor(std::log10(count)));
        step *= count / step > 5 ? 1 : count / step > 2 ? 0.5 : 0.2;
        step = std::max(1.0, std::round(step));
        add(printed("set xrange [%.1f:%.1f]\n", frames.first - 0.5, frames.last + 0.5) +
            printed("set xtics %.0f, %.0f\n", std::ceil(frames.first / step) * step, step) +
            "set grid lt 1 lw 1 lc rgb '#c8c8c8'\nset style fill solid\n" +
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
        const double leastPart = !mSession.measures() ? 0
                                 : panel.isStepped()  ? kLeastPart
                                                      : kLeastPartOfTimes;
        writeLabel(panel.left.label, kLeftLabel);
        if (panel.right.curves.empty()) {
            add("unset y2tics\nset ytics mirror\n");
        } else {
            add("set ytics nomirror\n" + axisCommands("y2", panel.right, mCurves, leastPart));
            writeLabel(panel.right.label, kRightLabel);
        }
        add(axisCommands("y", panel.left, mCurves, leastPart));
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
        add((index == 0 ? markTitles() : "") + "\nunset label\n");
    }

    // In a place of its own, however long the numbers of the axis are.
    void writeLabel(const std::string& label, double fromLeft) {
        add("set label " + quoted(label) +
            printed(" at screen %.4f, graph 0.5 center rotate by 90\n", fromLeft / kWidth));
    }

    double frameCount() const {
        return static_cast<double>(mPicture.frames.last) - mPicture.frames.first + 1;
    }

    bool isFew() const { return frameCount() <= kFewFrames; }

    // What belongs to the axis on the right is dashed.
    void plotCurve(const Curve& curve, const Panel& panel, const std::string& axes, size_t color) {
        const bool isRight = axes == "x1y2";
        const std::string number = std::to_string(curve.number);
        const std::string style =
                std::string(" lc rgb '") +
                (curve.isMark ? kMarkColor : kLineColors[color % std::size(kLineColors)]) + "'";
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
            plot("$lines", "1:3",
                 panel.isStepped() ? "steps"
                 : isFew()         ? "linespoints pt 7 ps 0.3"
                                   : "lines");
            add((isRight ? " dt '-'" : "") + (" lw 1.5" + key));
            key = " notitle";
        }
        if (mHasPoints[curve.number]) {
            for (const char* columns : {"1:3", "1:2"}) {
                plot("$points", columns,
                     curve.isMark ? "points pt 2 ps 1.4 lw 3"
                     : isFew()    ? "points pt 7 ps 0.6"
                                  : "points pt 7 ps 0.4");
                add(key);
                key = " notitle";
            }
        }
    }

    // Of what the picture has.
    std::string markTitles() const {
        std::string titles;
        if (!videosShown().empty()) {
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
    const std::vector<std::string> mAnswer;
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
