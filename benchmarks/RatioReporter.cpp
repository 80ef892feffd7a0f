#include "benchmarks/RatioReporter.h"

#include <algorithm>

namespace zk::bench {
namespace {

constexpr double kFastestTenth = 0.1;
constexpr double kMedian = 0.5;

}  // namespace

bool RatioReporter::ReportContext(const Context& /*context*/) {
    return true;
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(),
                         run.error_message.c_str());
            mHasFailed = true;
        } else if (run.run_type == Run::RT_Iteration) {
            // The library divides by the iterations of all threads together.
            mNanoseconds[run.run_name.function_name].push_back(run.GetAdjustedRealTime() *
                                                               static_cast<double>(run.threads));
        }
    }
}

double RatioReporter::nanoseconds(const std::string& name, double share) const {
    const auto found = mNanoseconds.find(name);
    if (found == mNanoseconds.end()) {
        return 0;
    }
    std::vector<double> sorted = found->second;
    std::sort(sorted.begin(), sorted.end());
    return sorted[static_cast<size_t>(share * static_cast<double>(sorted.size() - 1))];
}

RatioReporter::Figures RatioReporter::figures(const Row& row, double share) const {
    const double subject = nanoseconds(row.subject.name, share);
    const double baseline = nanoseconds(row.baseline.name, share);
    return {subject, baseline, subject / baseline};
}

void RatioReporter::printTable(const std::vector<Row>& rows, std::FILE* out) const {
    std::fprintf(out, "%-41s %10s   %-41s %10s %6s %8s %17s\n", "what", "ns", "baseline", "ns",
                 "ratio", "at most", "ratio of medians");
    for (const Row& row : rows) {
        const Figures quiet = figures(row, kFastestTenth);
        std::fprintf(out, "%-41s %10.1f   %-41s %10.1f %6.2f", row.subject.name.c_str(),
                     quiet.subject, row.baseline.name.c_str(), quiet.baseline, quiet.ratio);
        if (row.atMost > 0) {
            std::fprintf(out, " %8.2f", row.atMost);
        } else {
            std::fprintf(out, " %8s", "");
        }
        std::fprintf(out, " %17.2f\n", figures(row, kMedian).ratio);
    }
}

bool RatioReporter::writeCsv(const std::vector<Row>& rows, const std::string& path) const {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    std::fputs(
            "name,quiet_ns,baseline,quiet_baseline_ns,ratio,"
            "median_ns,median_baseline_ns,median_ratio\n",
            file);
    for (const Row& row : rows) {
        const Figures quiet = figures(row, kFastestTenth);
        const Figures usual = figures(row, kMedian);
        std::fprintf(file, "%s,%.1f,%s,%.1f,%.3f,%.1f,%.1f,%.3f\n", row.subject.name.c_str(),
                     quiet.subject, row.baseline.name.c_str(), quiet.baseline, quiet.ratio,
                     usual.subject, usual.baseline, usual.ratio);
    }
    const bool isWritten = std::ferror(file) == 0;
    return std::fclose(file) == 0 && isWritten;
}

}  // namespace zk::bench
