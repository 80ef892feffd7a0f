#pragma once

namespace zk::bench {

// A call through a virtual table into another library that does nothing: what the interface costs
// before the recorder has done anything.
class EmptyCall {
public:
    virtual void ask(bool* answer) = 0;

protected:
    ~EmptyCall() = default;
};

EmptyCall* emptyCall();

}  // namespace zk::bench
