#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"

namespace demo {

// What was played, what the recorder wrote and where, and what vdrdump makes of it, on standard
// output.
class SessionReport {
public:
    // All must outlive this. To be made before the session: it remembers which files are there.
    SessionReport(const Options& options, const SessionPlan& plan, const DeviceRoot& root);

    void print(const CameraSession& session) const;

private:
    using Sizes = std::map<std::string, uint64_t>;  // by path

    static Sizes sizesIn(const std::string& folder);
    // Files that are new or have grown.
    static Sizes writtenSince(const Sizes& before, const std::string& folder);

    void printSession(const CameraSession& session) const;
    void printLoss(const CameraSession& session) const;
    void printFiles(const Sizes& dumps, const Sizes& losses) const;
    void printCommands(const CameraSession& session, const Sizes& dumps, const Sizes& losses) const;
    void explain(const Sizes& dumps, const Sizes& losses) const;
    std::vector<std::string> aboutLosses(const char* command, const Sizes& dumps,
                                         const Sizes& losses) const;

    const Options& mOptions;
    const SessionPlan& mPlan;
    const DeviceRoot& mRoot;
    const Sizes mDumpsBefore;
    const Sizes mLossesBefore;
};

}  // namespace demo
