#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/RatioReporter.h"
#include "benchmarks/Tails.h"
#include "benchmarks/rows.h"

namespace {

using zk::bench::Measurement;
using zk::bench::Row;
using zk::bench::Tail;

constexpr int kRepetitions = 100;  // in random order among all others
constexpr double kSecondsPerRepetition = 0.008;

void add(const Measurement& measurement, bool isSmoke) {
    benchmark::internal::Benchmark* benchmark =
            benchmark::RegisterBenchmark(measurement.name.c_str(), measurement.run);
    benchmark->UseManualTime()->Threads(measurement.threads);
    if (isSmoke) {
        benchmark->Iterations(1);
    } else {
        benchmark->Repetitions(kRepetitions)->MinTime(kSecondsPerRepetition);
    }
}

}  // namespace

// vdr_bench [--smoke] [--csv=FILE] [--tails=FILE] and the options of the benchmark library
int main(int argc, char** argv) {
    bool isSmoke = false;
    std::string csv;
    std::string tailsCsv;
    std::vector<char*> others = {argv[0]};
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    others.push_back(interleave.data());
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--smoke") == 0) {
            isSmoke = true;
        } else if (std::strncmp(argv[i], "--csv=", 6) == 0) {
            csv = argv[i] + 6;
        } else if (std::strncmp(argv[i], "--tails=", 8) == 0) {
            tailsCsv = argv[i] + 8;
        } else {
            others.push_back(argv[i]);
        }
    }
    int count = static_cast<int>(others.size());
    benchmark::Initialize(&count, others.data());
    if (benchmark::ReportUnrecognizedArguments(count, others.data())) {
        return 2;
    }

    zk::bench::Device device;
    std::vector<Row> rows = zk::bench::framePathRows(device);
    for (Row& row : zk::bench::outputRows(device)) {
        rows.push_back(std::move(row));
    }
    std::set<std::string> names;
    for (const Row& row : rows) {
        for (const Measurement* measurement : {&row.subject, &row.baseline}) {
            if (names.insert(measurement->name).second) {
                add(*measurement, isSmoke);
            }
        }
    }
    zk::bench::RatioReporter reporter;
    const size_t run = benchmark::RunSpecifiedBenchmarks(&reporter);
    if (isSmoke) {
        std::printf("%zu measurements ran\n", run);
    } else {
        reporter.printTable(rows, stdout);
    }
    std::vector<Tail> tails = zk::bench::measureTails(device, isSmoke ? 0.01 : 0.5);
    for (Tail& tail : zk::bench::measureSlowDisk(device, isSmoke ? 0.1 : 5)) {
        tails.push_back(std::move(tail));
    }
    std::printf("\n");
    zk::bench::printTails(tails, stdout);
    for (const auto& [path, isWritten] :
         {std::pair(csv, csv.empty() || reporter.writeCsv(rows, csv)),
          {tailsCsv, tailsCsv.empty() || zk::bench::writeTails(tails, tailsCsv)}}) {
        if (!isWritten) {
            std::perror(path.c_str());
            return 1;
        }
    }
    return reporter.hasFailed() ? 1 : 0;
}
