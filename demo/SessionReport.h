#pragma once

#include "demo/BinFileCheck.h"
#include "demo/CameraSession.h"
#include "demo/DeviceRoot.h"
#include "demo/Findings.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"
#include "demo/TextFileCheck.h"

namespace demo {

// What a session has left behind, on standard output.
class SessionReport {
public:
    // All must outlive this.
    SessionReport(const Options& options, const DeviceRoot& root, const SessionPlan& plan,
                  const CameraSession& session, const BinFileCheck& binFile,
                  const TextFileCheck& textFiles, const Findings& findings);

    void print() const;

private:
    void printSession() const;
    void printFiles() const;
    void printFirstRecord() const;
    void printDrops() const;
    void printLivePhoto() const;
    void printStatus() const;
    void printRegistries() const;
    void printVerdict() const;

    const Options& mOptions;
    const DeviceRoot& mRoot;
    const SessionPlan& mPlan;
    const CameraSession& mSession;
    const BinFileCheck& mBinFile;
    const TextFileCheck& mTextFiles;
    const Findings& mFindings;
};

}  // namespace demo
