#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/Row.h"

namespace zk::bench {

// Collects what each measurement took and relates the rows' medians. Where several threads do the
// same, a time is that which one of them spends.
class RatioReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    bool hasFailed() const { return mHasFailed; }
    void printTable(const std::vector<Row>& rows, std::FILE* out) const;
    // Columns name,median_ns,baseline,baseline_ns,ratio. False where it could not be written.
    bool writeCsv(const std::vector<Row>& rows, const std::string& path) const;

private:
    double median(const std::string& name) const;

    std::map<std::string, std::vector<double>> mNanoseconds;
    bool mHasFailed = false;
};

}  // namespace zk::bench
