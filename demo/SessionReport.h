#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"

namespace demo {

// What was played, what the recorder wrote and where, on standard output.
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
    void printFiles(const CameraSession& session) const;

    const Options& mOptions;
    const SessionPlan& mPlan;
    const DeviceRoot& mRoot;
    const Sizes mDumpsBefore;
    const Sizes mLossesBefore;
};

}  // namespace demo
