#pragma once

#include <vector>

#include "benchmarks/Device.h"
#include "benchmarks/Row.h"

namespace zk::bench {

// `device` must outlive the rows.
std::vector<Row> framePathRows(Device& device);
std::vector<Row> outputRows(Device& device);

}  // namespace zk::bench
