#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/Row.h"

namespace zk::bench {

// Collects what each measurement took and relates what the rows' fastest tenths took at most:
// whoever else uses the machine adds time and takes none away, and adds it to copies and calls far
// more than to a lock, which waits for itself most of the time. The medians tell how quiet it was.
// Where several threads do the same, a time is that which one of them spends.
class RatioReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    bool hasFailed() const { return mHasFailed; }
    void printTable(const std::vector<Row>& rows, std::FILE* out) const;
    // Columns name, baseline, the fastest tenths (quiet_ns, quiet_baseline_ns, ratio) and medians
    // (median_ns, median_baseline_ns, median_ratio). False where it could not be written.
    bool writeCsv(const std::vector<Row>& rows, const std::string& path) const;

private:
    struct Figures {
        double subject;   // ns
        double baseline;  // ns
        double ratio;
    };
    // At a share of the sorted times: 0.5 is the median.
    Figures figures(const Row& row, double share) const;
    double nanoseconds(const std::string& name, double share) const;

    std::map<std::string, std::vector<double>> mNanoseconds;
    bool mHasFailed = false;
};

}  // namespace zk::bench
