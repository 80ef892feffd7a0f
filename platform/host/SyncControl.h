#pragma once

// The promise registry of the Linux stand-in. Any thread.
namespace zk::host {

// While set, getPromise answers as if it had created a promise, but hands out none.
void withholdPromises(bool withhold);
void forgetPromises();

}  // namespace zk::host
