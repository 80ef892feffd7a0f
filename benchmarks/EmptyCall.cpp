#include "benchmarks/EmptyCall.h"

namespace zk::bench {
namespace {

class Nothing final : public EmptyCall {
public:
    void ask(bool* /*answer*/) override {}
};

Nothing nothing;

}  // namespace

EmptyCall* emptyCall() {
    return &nothing;
}

}  // namespace zk::bench
