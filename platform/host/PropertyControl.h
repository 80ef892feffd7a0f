#pragma once

#include <string>

// The property store of the Linux stand-in. At first it holds what the environment variable
// VDR_PROPERTIES says, "key=value,key=value", so that a program that only links the library can be
// switched on from outside. Any thread.
namespace zk::host {

void setProperty(const std::string& key, const std::string& value);
void clearProperties();

}  // namespace zk::host
