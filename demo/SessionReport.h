#pragma once

#include <string>

#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/FolderState.h"
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
    void printCause(const CameraSession& session) const;
    void printSession(const CameraSession& session) const;
    void printFiles() const;
    void printNextSteps() const;

    const Options& mOptions;
    const SessionPlan& mPlan;
    const DeviceRoot& mRoot;
    const FolderState mDumpsBefore;
    const FolderState mLossesBefore;
};

}  // namespace demo
