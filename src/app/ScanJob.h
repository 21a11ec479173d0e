#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "backup/BackupInfoReader.h"
#include "backup/keys/BackupKeys.h"
#include "scan/ScanObserver.h"
#include "scan/ScanState.h"

namespace salvor {

class SalvorAppDelegate;

/// What a front end asks of a scan.
struct ScanRequest {
    std::filesystem::path source;  ///< a backup folder, or a property-list file inside one
    std::int32_t category = 0;     ///< data-type code, 0 to 8; 0 is everything
    /// The folder in which "Temp" is made; without it a private folder that goes with the job.
    std::optional<std::filesystem::path> workFolder;
    /// No picture is copied and no work folder made: each is listed where the backup keeps it.
    bool picturesInPlace = false;
    /// "X.Y" or "auto"; without it the version that is read.
    std::optional<std::string> ios;
    /// The signatures file; without it the one shipped with the program.
    std::optional<std::filesystem::path> signatures;
    /// The source is what a fresh backup of this job wrote: chosen and described already.
    bool freshBackup = false;
    /// Of an encrypted backup; null when it is none or stays locked.
    std::shared_ptr<const BackupKeys> keys;
    bool continueAnyway = false;  ///< answers "Yes" to the missing-property-list question
};

enum class ScanResult {
    Done,
    MissingPropertyLists,  ///< the question was not answered with "Yes"; `message` is its text
    SourceUnusable,        ///< no such folder, or not readable
    InvalidRequest,        ///< unknown category, a version that is none, output inside the backup
    WorkFolderRefused,     ///< "Temp" is not ours to remove, cannot be made or has no room
    Cancelled,             ///< the lists hold what was found until then
    Failed,                ///< an exception ended it, and the lists hold what was found until then
};

struct ScanOutcome {
    ScanResult result = ScanResult::Done;
    std::string message;     ///< what went wrong, naming the file and the cause; else empty
    bool encrypted = false;  ///< the manifest says so, and no keys were given
    /// Neither the reading nor the request gave a version: the scan ran as 0.0.
    bool versionUnknown = false;
    VersionFacts versions;  ///< what the property lists name
    std::filesystem::path backup;
};

/// One scan from a source to its result lists: the whole job for a front end. `runScan` blocks,
/// once per job; `cancel` may be called from any thread (not from a signal handler), before or
/// during it. A private work folder lives as long as the job. Without a signatures file the scan
/// runs and recovers nothing; the observer is warned.
class ScanJob {
  public:
    explicit ScanJob(ScanObserver& observer);
    ScanJob(const ScanJob&) = delete;
    ScanJob& operator=(const ScanJob&) = delete;
    ~ScanJob();

    ScanOutcome runScan(const ScanRequest& request);
    void cancel();

    /// For what comes before a scan: a fresh backup of a connected device.
    SalvorAppDelegate& application() { return *application_; }

    /// The lists, counters and status texts; to be read after `runScan` has returned.
    ScanState& state();

  private:
    std::unique_ptr<SalvorAppDelegate> application_;
};

/// Runs a job that is never cancelled and hands its state to nobody but `observer`.
ScanOutcome runScan(const ScanRequest& request, ScanObserver& observer);

}  // namespace salvor
