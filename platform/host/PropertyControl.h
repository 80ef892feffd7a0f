#pragma once

#include <string>

// The property store of the Linux stand-in. Any thread.
namespace zk::host {

void setProperty(const std::string& key, const std::string& value);
void clearProperties();

}  // namespace zk::host
