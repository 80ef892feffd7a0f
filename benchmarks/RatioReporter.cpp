#include "benchmarks/RatioReporter.h"

#include <algorithm>

namespace zk::bench {

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

double RatioReporter::median(const std::string& name) const {
    const auto found = mNanoseconds.find(name);
    if (found == mNanoseconds.end()) {
        return 0;
    }
    std::vector<double> sorted = found->second;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
}

void RatioReporter::printTable(const std::vector<Row>& rows, std::FILE* out) const {
    std::fprintf(out, "%-28s %10s   %-44s %10s %6s %8s\n", "what", "median ns", "baseline",
                 "median ns", "ratio", "at most");
    for (const Row& row : rows) {
        const double subject = median(row.subject.name);
        const double baseline = median(row.baseline.name);
        std::fprintf(out, "%-28s %10.1f   %-44s %10.1f %6.2f", row.subject.name.c_str(), subject,
                     row.baseline.name.c_str(), baseline, subject / baseline);
        if (row.atMost > 0) {
            std::fprintf(out, " %8.2f", row.atMost);
        }
        std::fputc('\n', out);
    }
}

bool RatioReporter::writeCsv(const std::vector<Row>& rows, const std::string& path) const {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    std::fputs("name,median_ns,baseline,baseline_ns,ratio\n", file);
    for (const Row& row : rows) {
        const double subject = median(row.subject.name);
        const double baseline = median(row.baseline.name);
        std::fprintf(file, "%s,%.1f,%s,%.1f,%.3f\n", row.subject.name.c_str(), subject,
                     row.baseline.name.c_str(), baseline, subject / baseline);
    }
    const bool isWritten = std::ferror(file) == 0;
    return std::fclose(file) == 0 && isWritten;
}

}  // namespace zk::bench
