#pragma once

#include "app/ScanJob.h"
#include "tools/sample/SampleBackup.h"

namespace salvor {

/// What a scan of everything asks for, with the project's own signatures.
inline ScanRequest requestFor(const std::filesystem::path& source) {
    ScanRequest request;
    request.source = source;
    request.signatures = SALVOR_SOURCE_DIR "/src/resources/RecoverySignatures.xml";
    return request;
}

/// A scan that nobody watches.
class SampleScan {
  public:
    /// The result of the scan, which is over.
    ScanResult run(const ScanRequest& request) { return job_.runScan(request).result; }
    const ScanState& state() { return job_.state(); }

  private:
    ScanObserver nobody_;
    ScanJob job_{nobody_};
};

}  // namespace salvor
